#!/usr/bin/env bash
# Goal: the recipes of docs/recipes.md do what they say, as they stand there.
#
#   recipes_test.sh <source folder> <folder of the programs> broker | logrotate | service
set -euo pipefail

recipes=$1/docs/recipes.md programs=$2 recipe=$3
work=$(mktemp -d)
jobs=()
clean_up() {
    for job in "${jobs[@]}"; do
        kill -- "$job" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap clean_up EXIT
cd "$work"

fail() {
    echo "$*" >&2
    exit 1
}
needs() { command -v "$1" >/dev/null || { echo "there is no $1"; exit 77; }; }

# block LANGUAGE N: the N-th block of a language.
block() {
    awk -v fence="\`\`\`$1" -v wanted="$2" \
        '$0 == "```" { inside = 0 } inside { print } $0 == fence { inside = ++seen == wanted }' "$recipes"
}

# await COMMAND...: until it succeeds; what never does must not keep the test for ever.
await() {
    local i
    for ((i = 0; i < 1200; ++i)); do
        ! "$@" || return 0
        sleep 0.05
    done
    fail "in vain: $*"
}

# stmctl as the recipes call it, on a virtual board.
mkdir bin
printf '#!/bin/sh\nexec "%s/virtual-board" --board "%s/board" "%s/stmctl" "$@"\n' \
    "$programs" "$work" "$programs" >bin/stmctl
chmod +x bin/stmctl
PATH=$work/bin:$PATH:/usr/sbin

lines() { [ "$(wc -l <"$1")" -ge "$2" ]; }

broker() {
    needs mosquitto
    needs mosquitto_pub
    export BROKER=127.0.0.1 BOARD=north PORT
    local broker
    for PORT in $(shuf -i 20000-30000 -n 20); do
        printf 'listener %s 127.0.0.1\nallow_anonymous true\nuser %s\n' "$PORT" "$(id -un)" >broker.conf
        mosquitto -c broker.conf >broker.log 2>&1 &
        broker=$!
        await grep -qs 'running\|Error' broker.log
        grep -q running broker.log && break
        wait "$broker" || true
    done
    jobs+=("$broker")
    block sh 2 >subscribe
    setsid bash subscribe >received 2>subscribed &
    jobs+=(-$!)
    block sh 1 >publish
    setsid bash publish >published 2>&1 &
    local publisher=$!
    await lines received 20
    kill -- "-$publisher"
    wait "$publisher" || true
    sed -n '1,20p' received >first
    [ "$(grep -c '^boards/north/records {"time":[0-9.]*,"nr":.*}$' first)" -eq 20 ] || fail "$(head -3 first)"
}

logrotate_turns() {
    needs logrotate
    # The service is a process here.
    cat >bin/systemctl <<'END'
#!/usr/bin/env bash
case $1 in
stop) kill "$(cat service)"; while [ -e running ]; do sleep 0.05; done ;;
start) { setsid bash -c 'echo $$ >service; exec stmctl follow --variant temp --format csv --append -o records.csv --keep-going' \
    </dev/null 2>>follow.err; rm running; } & touch running; while ! [ -s records.csv ]; do sleep 0.05; done ;;
esac
END
    chmod +x bin/systemctl
    block conf 1 | sed "s,/var/log/,$work/,; s/compress/nocompress/" >turn.conf
    chmod 600 turn.conf
    systemctl start records.service
    await lines records.csv 20
    logrotate --force --state "$work/state" turn.conf || fail "logrotate ends in $?"
    await lines records.csv 20
    systemctl stop records.service
    for file in records.csv records.csv.1; do
        [ "$(grep -c '^"nr"' "$file")" -eq 1 ] || fail "$file has not one header"
        [ "$(tail -c 1 "$file" | od -An -c | tr -d ' ')" = '\n' ] || fail "$file does not end in a whole line"
    done
}

service() {
    needs systemd-analyze
    block ini 1 | sed "s,/usr/bin/stmctl,$programs/stmctl," >records.service
    local complaints
    complaints=$(systemd-analyze verify --man=no "$work/records.service" 2>&1 | grep records.service || true)
    [ -z "$complaints" ] || fail "$complaints"
    # What it executes, ended as a service is.
    block ini 1 | sed -n "s,^ExecStart=/usr/bin/,,p" | sed "s,/var/log,$work,; s,/run,$work," >execute
    [ -s execute ] || fail "no ExecStart"
    setsid bash -c "exec $(cat execute)" </dev/null 2>errors &
    local process=$!
    await test -s records.csv
    await lines records.csv 20
    kill "$process"
    wait "$process" || fail "the service ends in $?: $(cat errors)"
    grep -q '"records":' records.json || fail "no summary"
}

case $recipe in
broker) broker ;;
logrotate) logrotate_turns ;;
service) service ;;
*) fail "which recipe?" ;;
esac
