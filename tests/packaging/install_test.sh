#!/usr/bin/env bash
# Goal: what is installed serves front ends: through pkg-config, through find_package, and from Python
# alone. Each runs on the installed virtual board.
#
#   install_test.sh <build folder> <cc> <readelf>
set -euo pipefail

build=$1 cc=$2 readelf=$3
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/usr

fail() {
    echo "$*" >&2
    exit 1
}

# expect WORDS COMMAND...: all that the command says.
expect() {
    local words=$1 said
    shift
    said=$("$@" 2>&1) || fail "status $? of: $*: $said"
    [ "$said" = "$words" ] || fail "\"$said\" from: $*"
}

cmake --install "$build" --prefix "$prefix" >"$work/log" || { cat "$work/log"; fail "cmake --install"; }
libdir=$(dirname "$(find "$prefix" -name libstm_com_funcs.a)")
board() { "$prefix/bin/virtual-board" --count-time "$@"; }

# Where things lie.
for file in bin/update include/stm_com_funcs.h lib/udev/rules.d/60-spidev.rules \
    share/man/man1/update.1.gz share/man/man1/virtual-board.1.gz share/man/man3/stm_com_funcs.3.gz; do
    [ -f "$prefix/$file" ] || fail "$file is missing"
done
[ -f "$libdir/virtual-board/libvirtual-board.so" ] || fail "the preload library is missing"
expect 2 board "$prefix/bin/update" -state

# A program in C, by pkg-config: the shared library, and the archive.
export PKG_CONFIG_PATH=$libdir/pkgconfig
[ "$(pkg-config --variable=prefix stm_com_funcs)" = "$prefix" ] || fail "pkg-config knows another prefix"
read -ra flags < <(pkg-config --cflags --libs stm_com_funcs)
"$cc" -std=c11 -Wall -Wextra -Wpedantic -Werror "$here/front_end/state.c" "${flags[@]}" -o "$work/shared"
export LD_LIBRARY_PATH=$libdir
expect 2 board "$work/shared"
"$readelf" -d "$work/shared" | grep -q 'NEEDED.*\[libstm_com_funcs.so.0\]' || fail "not by its soname"
"$cc" -std=c11 "$here/front_end/state.c" "${flags[0]}" "$libdir/libstm_com_funcs.a" -o "$work/static"
expect 2 env -u LD_LIBRARY_PATH "$prefix/bin/virtual-board" "$work/static"
"$readelf" -d "$libdir/libstm_com_funcs.so" | grep NEEDED | grep -v 'libc\.so\|ld-linux' &&
    fail "the shared library needs more than the C library"

# The same by CMake, in a project that knows C alone.
CC=$cc cmake -S "$here/front_end" -B "$work/project" -DCMAKE_PREFIX_PATH="$prefix" >"$work/log" 2>&1 &&
    cmake --build "$work/project" >"$work/log" 2>&1 || { cat "$work/log"; fail "find_package"; }
expect 2 board "$work/project/state"
expect 2 board "$work/project/state_static"

# The logger, written from the header alone, ends at Ctrl-C with whole lines.
"$cc" -std=c11 -Wall -Wextra -Wpedantic -Werror "$here/../../examples/logger.c" "${flags[@]}" -o "$work/logger"
"$prefix/bin/virtual-board" "$work/logger" >"$work/records.csv" &
logger=$!
for ((i = 0; i < 1200; ++i)); do
    [ "$(wc -l <"$work/records.csv")" -lt 20 ] || break
    sleep 0.05
done
kill -INT "$logger"
wait "$logger" || fail "the logger ends in $?"
[ "$(grep -c '^"nr";' "$work/records.csv")" -eq 1 ] || fail "the logger's header"
[ "$(tail -c 2 "$work/records.csv" | od -An -c | tr -d ' ')" = ';\n' ] || fail "half a line of the logger"

# Python, by the shared library alone.
if command -v python3 >/dev/null; then
    expect "10 records, 1 to 10" board python3 "$here/ten_records.py" "$libdir/libstm_com_funcs.so.0"
fi
