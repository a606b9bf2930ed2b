#!/usr/bin/env bash
# Checks the ring's model with spin.
#
#   model_test.sh ROOT endless|read_out|follower|ring_reader
#   model_test.sh ROOT trace EFFECT CAUSE    shows the shortest trace to a pair of the read-out
#
# ends in 77 where spin is not installed.
set -euo pipefail

for program in spin gcc; do
    command -v $program >/dev/null || {
        echo "the model is not checked: $program is not installed"
        exit 77
    }
done

root=$(realpath "$1")
model=$root/tests/model
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cp "$model"/*.pml "$model"/tally.h .

# make_verifier MODEL OPTIONS -- COMPILER_OPTIONS...
make_verifier() {
    local name=$1 options=$2
    shift 3
    # shellcheck disable=SC2086
    spin -a $options "$name.pml" >spin.log || {
        cat spin.log
        return 1
    }
    gcc -O1 -w "$@" -o verifier pan.c
}

# verify OPTIONS...: without an error in the whole state space, of which the size is printed
verify() {
    ./verifier -m1000000 "$@" >verifier.log || true
    grep -E 'states, stored|^pan: ltl|^pan:[0-9]+:' verifier.log || true
    if ! grep -q 'errors: 0' verifier.log || grep -qE '^error|out of memory' verifier.log; then
        cat verifier.log
        return 1
    fi
}

check_endless() {
    echo "== indices and counts, five slots"
    make_verifier endless "-DSLOTS=5" -- -DSAFETY
    verify -N bounds
    echo "== batches, four slots"
    make_verifier endless "" --
    verify -a -f -N batches_end
}

# The rows "| EFFECT | CAUSE | `Fixture.test` |" of a part of the README.
rows() {
    awk -v title="## $1" '/^## /{ inside = $0 == title } inside' "$model/README.md" |
        sed -n 's/^| \([A-Z]*\) | \([A-Z_]*\) | `\(.*\)` |$/\1 \2 \3/p'
}

# compare TITLE: the pairs that were met are those of the README, and each test is in the tree.
compare() {
    local effect cause test
    sed -n 's/^met \(.*\) [0-9]*$/\1/p' met | sort -u >found
    rows "$1" | cut -d' ' -f1,2 | sort >listed
    [ -s listed ] || return 1
    diff -u listed found || return 1
    while read -r effect cause test; do
        grep -rqzE "TEST_F\(${test%.*},\s*${test#*.}\)" "$root"/tests/ringbuffer || {
            echo "$effect $cause: there is no test $test"
            return 1
        }
    done < <(rows "$1")
}

check_read_out() {
    echo "== a reader that comes at any time, two turns but one record"
    make_verifier read_out "-DRECORDS=7" -- -DSAFETY
    verify
    cp verifier.log met
    echo "== a writer that is killed and started again"
    make_verifier read_out "-DRESTARTS -DRECORDS=5" -- -DSAFETY -DCOLLAPSE
    verify
    cat verifier.log >>met
    compare "What the read-out can lose or repeat"
}

check_ring_reader() {
    make_verifier ring_reader "-DRECORDS=8" -- -DSAFETY -O0
    verify
    cp verifier.log met
    echo "== a writer that is killed and started again"
    make_verifier ring_reader "-DRESTARTS -DRECORDS=7" -- -DSAFETY -O0
    verify
    cat verifier.log >>met
    compare "What the example can lose or repeat"
}

check_follower() {
    echo "== stmctl ring read beside one writer"
    make_verifier follower "-DRECORDS=7 -DPUTS_IN_LOOK=2" -- -DSAFETY
    verify
    echo "== and beside one that is killed and started again"
    make_verifier follower "-DRESTARTS -DRECORDS=5" -- -DSAFETY
    verify
    echo "== an overrun and a restart in one pause"
    make_verifier follower "-DRESTARTS -DRECORDS=6" -- -DSAFETY -O0
    ./verifier -m1000000 | grep 'assertion violated .*front>delivered'
}

trace() {
    local options="-DRECORDS=6 -DSOUGHT_EFFECT=$1 -DSOUGHT_CAUSE=$2"
    [[ $2 =~ ^(KILLED|RESTARTED|HALF_FILLED)$ ]] && options+=" -DRESTARTS"
    make_verifier read_out "$options" -- -DSAFETY -DBFS
    ./verifier >verifier.log
    # shellcheck disable=SC2086
    spin -t -p -g $options read_out.pml | grep -vE 'sub-sequence|\.\(goto\)|\[IF\]|\[DO\]'
}

case $2 in
trace) trace "$3" "$4" ;;
*) check_"$2" ;;
esac
