#!/usr/bin/env bash
# Goal: the manual pages are well formed, refer to pages that exist, that of the module is its header's, and
# those of the tools say what the tools themselves say.
#
#   man_pages_test.sh <source folder> <folder of the programs>
set -euo pipefail

source=$1 programs=$2
command -v mandoc >/dev/null || { echo "there is no mandoc"; exit 77; }

# mandoc looks for the pages that these refer to on the machine; here they stand beside one another.
complaints=$(mandoc -Tlint "$source"/man/*.[13] | grep -v 'referenced manual not found' || true)
[ -z "$complaints" ] || { echo "$complaints"; exit 1; }
missing=$(sed -n 's/^\.Xr \([^ ]*\) \([0-9]\).*/\1.\2/p' "$source"/man/*.[13] | sort -u |
    while read -r page; do [ -f "$source/man/$page" ] || echo "$page"; done)
[ -z "$missing" ] || { echo "referred to, but not there: $missing"; exit 1; }
if command -v python3 >/dev/null; then
    "$source/script/man-page" --check
    "$source/script/tool-pages" "$programs" --check
fi

# What update's usage lists, its page lists.
for option in $("$programs/update" 2>&1 | sed -n 's/^\t -\([a-z]*\):.*/\1/p'); do
    grep -q "^\.It Fl $option\b" "$source/man/update.1" || { echo "update.1 lacks -$option"; exit 1; }
done
[ "$(grep -c '^\.It Fl' "$source/man/update.1")" -eq "$("$programs/update" 2>&1 | grep -c $'^\t -')" ]
