#!/bin/sh
# Goal: the archive offers to C programs exactly what its header declares, to C++ programs nothing
# outside its namespace, and needs the C library alone: no C++ runtime, no heap.
#
#   NM=nm CC=gcc symbols_test.sh <archive> <header>
set -eu

archive=$1
header=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
    echo "$1" >&2
    sed 's/^/    /' "$2" >&2
    failures=$((failures + 1))
}

expect_empty() {
    [ ! -s "$2" ] || fail "$1" "$2"
}

# Names that nm lists, without the version behind an @ that shared libraries add.
names() {
    sed -n 's/^\([^ @]*\).* [A-Za-z] *[0-9a-f ]*$/\1/p' | sort -u
}

"$NM" -P -g --defined-only "$archive" | names >"$work/defined"
"$NM" -P -g --undefined-only "$archive" | names >"$work/wanted"
[ -s "$work/defined" ] || { echo "$archive defines nothing" >&2; exit 1; }
if grep -qE '^__(asan|ubsan|tsan|gcov)_' "$work/wanted"; then
    echo "the archive is instrumented"
    exit 77
fi

"$CC" -E -P "$header" | grep -oE '\b(stm|RingBuffer)_[A-Za-z0-9_]+ *\(' | tr -d ' (' >"$work/api"
sort -u -o "$work/api" "$work/api"
grep -v '^_Z' "$work/defined" >"$work/offered" || true
comm -23 "$work/api" "$work/offered" >"$work/missing"
comm -13 "$work/api" "$work/offered" >"$work/superfluous"
expect_empty "declared but not offered:" "$work/missing"
expect_empty "offered but not declared:" "$work/superfluous"
grep '^_Z' "$work/defined" | grep -v '^_ZN3stm' >"$work/outside" || true
expect_empty "outside the namespace stm:" "$work/outside"

# The C library, and only for what it lacks the compiler's own support library, which is slower to
# read. The linker makes the table of offsets.
"$NM" -P -D --defined-only "$("$CC" -print-file-name=libc.so.6)" | names >"$work/library"
echo _GLOBAL_OFFSET_TABLE_ >>"$work/library"
sort -u "$work/library" "$work/defined" >"$work/available"
comm -23 "$work/wanted" "$work/available" >"$work/unknown"
if [ -s "$work/unknown" ]; then
    mv "$work/unknown" "$work/elsewhere"
    "$NM" -P -g --defined-only "$("$CC" -print-libgcc-file-name)" 2>"$work/empty_members" |
        names >"$work/support"
    comm -23 "$work/elsewhere" "$work/support" >"$work/unknown"
fi
expect_empty "needed, but not of the C library:" "$work/unknown"

heap="malloc|calloc|realloc|reallocarray|free|alloca|aligned_alloc|memalign|posix_memalign"
heap="$heap|strdup|strndup|asprintf|vasprintf|open_memstream|getline"
grep -E "^($heap)\$|^(__cxa_|__gxx_|_ZN|_Zn|_Zd|_ZSt)" \
    "$work/wanted" | grep -v '^_ZN3stm' >"$work/forbidden" || true
expect_empty "heap or C++ runtime:" "$work/forbidden"

exit "$failures"
