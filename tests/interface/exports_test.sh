#!/bin/sh
# Goal: the shared library exports exactly the names in the list of exports, and these are exactly what the
# header declares: no change of the interface passes unseen.
#
#   NM=nm CC=gcc exports_test.sh <shared library> <list of exports> <header>
set -eu

library=$1 list=$2 header=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$NM" -D --defined-only "$library" | sed -n 's/.* T \([^@ ]*\).*/\1/p' | sort -u >"$work/exported"
"$NM" -D --defined-only "$library" | grep -v ' T \| A STM_COM_FUNCS_0' >"$work/other" || true
sed -n 's/^ *\([A-Za-z][A-Za-z0-9_]*\);$/\1/p' "$list" | sort -u >"$work/listed"
"$CC" -E -P "$header" | grep -oE '\b(stm|RingBuffer)_[A-Za-z0-9_]+ *\(' | tr -d ' (' |
    sort -u >"$work/declared"

[ -s "$work/listed" ] || { echo "nothing is listed in $list" >&2; exit 1; }
[ ! -s "$work/other" ] || { echo "exported, and no function:" >&2; cat "$work/other" >&2; exit 1; }
diff -u "$work/listed" "$work/exported" >&2 || { echo "listed (-) and exported (+) differ" >&2; exit 1; }
diff -u "$work/listed" "$work/declared" >&2 || { echo "listed (-) and declared (+) differ" >&2; exit 1; }
