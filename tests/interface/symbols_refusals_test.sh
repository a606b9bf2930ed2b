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

verdict accepted "what is declared, and nothing else" "void stm_open(void) {}"
verdict accepted "calls of the C library" "void stm_open(void) { perror(\"\"); usleep(1); }"
verdict accepted "a name of the namespace" "void stm_open(void) {} void _ZN3stm4helpEv(void) {}"
verdict refused "a C++ name outside of it" "void stm_open(void) {} void _Z4helpv(void) {}"
verdict refused "a declared function is missing" "void stm_close(void) {}"
verdict refused "a function nobody declared" "void stm_open(void) {} void stm_more(void) {}"
verdict refused "a variable nobody declared" "void stm_open(void) {} int more = 1;"
verdict refused "a name of no library" "void stm_open(void) { nowhere(); }"
verdict refused "the heap" "void stm_open(void) { malloc(1); }"
verdict refused "the heap's other end" "void stm_open(void) { free(0); }"
verdict refused "operator new" "void stm_open(void) { _Znwm(1); }"
verdict refused "the C++ runtime" "void stm_open(void) { __cxa_atexit(0, 0, 0); }"

exit "$failures"
