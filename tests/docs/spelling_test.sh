#!/usr/bin/env bash
# The documents, the header and the help texts have no word that codespell knows as misspelt.
#
#   spelling_test.sh ROOT PROGRAMS
#
# ends in 77 where codespell is not installed.
set -uo pipefail

command -v codespell >/dev/null || exit 77

root=$1
programs=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
export LC_ALL=C.UTF-8

# It must know a mistake when it sees one.
echo 'a seperate sentence' | codespell - >/dev/null && exit 1

"$programs/virtual-board" --help >"$folder/virtual-board"
"$programs/update" >"$folder/update" 2>&1
"$programs/stmctl" --help >"$folder/stmctl"
words=$("$programs/stmctl" --help | sed '/^Examples:/,$d' | sed -n 's/^  \([a-z]\{3,\}\)  .*/\1/p')
for command in $words; do
    "$programs/stmctl" "$command" --help >"$folder/stmctl-$command"
done
for topic in access status losses stop; do
    "$programs/stmctl" --help "$topic" >"$folder/stmctl-help-$topic"
done
[ "$(find "$folder" -type f -size +100c | wc -l)" -gt 15 ] || {
    echo "the help texts are missing"
    exit 1
}

codespell "$root"/*.md "$root"/docs/*.md "$root/link/stm_com_funcs.h" "$folder"/*
