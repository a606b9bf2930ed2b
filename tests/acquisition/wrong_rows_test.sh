#!/bin/sh
# Goal: the compiler refuses a table with a wrong row, and says which rule the row breaks.
#
#   CXX=g++ wrong_rows_test.sh <root of the tree>
set -eu

root=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
    printf '%s\n' "$1" >&2
    [ ! -s "$work/log" ] || sed 's/^/    /' "$work/log" >&2
    failures=$((failures + 1))
}

# compiles: whether $work/copy.cpp does; what the compiler says is left in $work/log
compiles() {
    "$CXX" -std=c++20 -fsyntax-only -I "$root" "$work/copy.cpp" >"$work/log" 2>&1
}

# edited <what> <source> <sed script>: leaves the edited copy; false if the script changes nothing
edited() {
    : >"$work/log"
    sed "$3" "$root/acquisition/$2" >"$work/copy.cpp"
    cmp -s "$work/copy.cpp" "$root/acquisition/$2" || return 0
    fail "$2, $1: there is nothing like it any more: $3"
    return 1
}

# refused <what> <source> <sed script> <words of the compiler>
refused() {
    edited "$1" "$2" "$3" || return 0
    if compiles; then
        fail "$2, $1: compiles"
    elif ! grep -qF "$4" "$work/log"; then
        fail "$2, $1: refused, but without the words: $4"
    fi
}

# accepted <what> <source> <sed script>
accepted() {
    edited "$1" "$2" "$3" || return 0
    compiles || fail "$2, $1: does not compile"
}

# unchanged <source>
unchanged() {
    cp "$root/acquisition/$1" "$work/copy.cpp"
    compiles || fail "$1: does not compile"
}

twice="a setting's code stands twice"
range="a setting's range cannot be met, or has no noun"
missing="no_row_has_this_code"

unchanged settings.cpp
refused "a row and its copy" settings.cpp '/{0xC2, /p' "$twice"
refused "the first row behind the last" settings.cpp '/{0xC5, /h;/{0x51, /G' "$twice"
refused "a code for another" settings.cpp 's/{0x5A, /{0x5B, /' "$twice"
refused "more than the most" settings.cpp \
    's/\({0x52, Tested::whole,\) *3, 32000,/\1 32001, 32000,/' "$range"
accepted "exactly the most" settings.cpp \
    's/\({0x52, Tested::whole,\) *3, 32000,/\1 32000, 32000,/'
refused "256 channels in a byte" settings.cpp \
    's/\({0xC2, Tested::low_byte,\) *0, *7,/\1 0, 256,/' "$range"
accepted "255 as the last channel in a byte" settings.cpp \
    's/\({0xC2, Tested::low_byte,\) *0, *7,/\1 0, 255,/'
refused "65536 in a word" settings.cpp \
    's/\({0x51, Tested::low_word,\) *0, 32000,/\1 0, 65536,/' "$range"
accepted "65535 in a word" settings.cpp \
    's/\({0x51, Tested::low_word,\) *0, 32000,/\1 0, 65535,/'
refused "65536 where 16 bits travel" settings.cpp \
    's/\({0x52, Tested::whole,\) *3, 32000,/\1 3, 65536,/' "$range"
refused "no noun" settings.cpp 's/\({0x97, .*\)"BE channel"/\1nullptr/' "$range"
refused "no row" settings.cpp '/{0x97, /d' "$missing"
refused "an operation with a code of nobody's" settings.cpp 's/setting(0x9B)/setting(0x9D)/' \
    "$missing"

twice="a query's code stands twice"
noun="a query has channels, but no noun for them"

unchanged queries.cpp
refused "a row and its copy" queries.cpp '/{0x95, /p' "$twice"
refused "the first row behind the last" queries.cpp '/{0x73, /h;/{0x9A, /G' "$twice"
refused "a code for another" queries.cpp 's/{0x06, /{0x07, /' "$twice"
refused "channels without a noun" queries.cpp \
    's/\({0xA0, Reply::number32,\) *0, nullptr/\1 1, nullptr/' "$noun"
refused "channels whose noun is gone" queries.cpp 's/\({0x9A, .*\)"BE channel"/\1nullptr/' "$noun"
refused "no row" queries.cpp '/{0x9A, /d' "$missing"
refused "an operation with a code of nobody's" queries.cpp 's/query(0xA0)/query(0xA1)/' "$missing"

exit "$failures"
