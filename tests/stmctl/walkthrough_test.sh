#!/usr/bin/env bash
# Runs the commands of a walkthrough on one board and compares all that they say, and how they end, with
# what stands below them.
#
#   walkthrough_test.sh WALKTHROUGH STMCTL VIRTUAL-BOARD...
#
# A line "$ COMMAND" is run by bash; fault=... in front of stmctl makes something go wrong. Below it
# stands what is shown, and "[STATUS]" where the status is not 0. Other lines in front of the first
# command are remarks. With the environment variable WALKTHROUGH_OUT the real one is left there, with
# WALKTHROUGH_DIALOGUES the transcript of each command, by its number, and its faults beside it.
set -uo pipefail

# The ring is one for all: here it is one of our own, where that is allowed.
if [ -z "${WALKTHROUGH_ALONE:-}" ]; then
    export WALKTHROUGH_ALONE=yes
    for alone in 'unshare --ipc' 'unshare --user --map-root-user --ipc'; do
        $alone true 2>/dev/null && exec $alone "$0" "$@"
    done
fi

walkthrough=$(realpath "$1")
program=$2
shift 2
board=("$@")
[ ${#board[@]} -gt 1 ] && board=("${board[0]}" "$2" "${*:3:$#-4}" "${@: -2}")

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
export LC_ALL=C

dialogues=${WALKTHROUGH_DIALOGUES:-}
[ -z "$dialogues" ] || { rm -rf "$dialogues" && mkdir -p "$dialogues" || exit 1; }
command=0

stmctl() {
    [ -z "$dialogues" ] || printf '%s\n' "${fault:-}" >>"$dialogues/$command.faults"
    "${board[@]}" --board board --count-time ${fault:+--fault "$fault"} ${answer:+--answer "$answer"} \
        ${dialogues:+--transcript "$dialogues/$command"} "$program" "$@"
}

while IFS= read -r line; do
    case $line in
    '#'* | '') printf '%s\n' "$line" ;;
    '$ '*)
        printf '%s\n' "$line"
        command=$((command + 1))
        { eval "${line#\$ }"; } 2>&1 </dev/null
        status=$?
        [ $status -eq 0 ] || printf '[%d]\n' $status
        ;;
    esac
done <"$walkthrough" | grep -v 'cannot be preloaded' >"$folder/.out" # as gnuplot is no ARM program

[ -z "${WALKTHROUGH_OUT:-}" ] || cp "$folder/.out" "$WALKTHROUGH_OUT"
diff -u "$walkthrough" "$folder/.out"
