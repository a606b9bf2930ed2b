#!/bin/sh
# Goal: the check of the archive's names refuses what it is there to refuse.
#
#   NM=nm AR=ar CC=gcc symbols_refusals_test.sh
set -eu

check=$(dirname "$0")/symbols_test.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

echo 'void stm_open(void);' >"$work/header.h"

# verdict <wanted: accepted or refused> <what> <C source>
verdict() {
    rm -f "$work/lib.a"
    printf '%s\n' "$3" | "$CC" -fno-builtin -w -O0 -x c -c - -o "$work/object.o"
    "$AR" rc "$work/lib.a" "$work/object.o"
    actual=refused
    if sh "$check" "$work/lib.a" "$work/header.h" >"$work/log" 2>&1; then
        actual=accepted
    fi
    if [ "$actual" != "$1" ]; then
        echo "$2: $actual" >&2
        cat "$work/log" >&2
        failures=$((failures + 1))
    fi
}

link='int stm_link;'
verdict accepted "what is declared, and nothing else" "$link void stm_open(void) {}"
verdict accepted "calls of the C library" "$link void stm_open(void) { perror(\"\"); usleep(1); }"
verdict accepted "a mangled name" "$link void stm_open(void) {} void _Z4helpv(void) {}"
verdict refused "a declared function is missing" "$link"
verdict refused "the link's state is missing" "void stm_open(void) {}"
verdict refused "a function nobody declared" "$link void stm_open(void) {} void stm_more(void) {}"
verdict refused "a variable nobody declared" "$link void stm_open(void) {} int more = 1;"
verdict refused "a name of no library" "$link void stm_open(void) { nowhere(); }"
verdict refused "the heap" "$link void stm_open(void) { malloc(1); }"
verdict refused "the heap's other end" "$link void stm_open(void) { free(0); }"
verdict refused "operator new" "$link void stm_open(void) { _Znwm(1); }"
verdict refused "the C++ runtime" "$link void stm_open(void) { __cxa_atexit(0, 0, 0); }"

exit "$failures"
