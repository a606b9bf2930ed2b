#!/bin/sh
# Goal: whatever the archive takes from the C library either never enters the kernel, or is among
# the calls that are counted.
#
#   NM=nm imports_test.sh <archive> <counted call>...
set -eu

archive=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# They work on memory alone. The compiler's own support for what the machine lacks does, too.
harmless="__errno_location|_GLOBAL_OFFSET_TABLE_|stderr|feof|snprintf|vsnprintf"
harmless="$harmless|mem(chr|cmp|cpy|move|set)|str(chr|cmp|len|ncmp|nlen)|__aeabi_[a-z0-9_]+"

names() {
    sed -n 's/^\([^ @]*\).* [A-Za-z] *[0-9a-f ]*$/\1/p' | sort -u
}

"$NM" -P -g --defined-only "$archive" | names >"$work/defined"
"$NM" -P -g --undefined-only "$archive" | names >"$work/wanted"
if grep -qE '^__(asan|ubsan|tsan|gcov)_' "$work/wanted"; then
    echo "the archive is instrumented"
    exit 77
fi
comm -23 "$work/wanted" "$work/defined" | grep -vxE "$harmless" >"$work/entering" || true

printf '%s\n' "$@" | sort -u >"$work/counted"
if comm -23 "$work/entering" "$work/counted" | grep .; then
    echo "these calls are neither known to be harmless nor counted" >&2
    exit 1
fi
# Every archive makes exchanges; one that seems to make none has not been looked at.
if ! grep -qx ioctl "$work/entering"; then
    echo "no exchange is made" >&2
    exit 1
fi
