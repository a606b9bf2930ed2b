#!/usr/bin/env bash
# Goal: the packages have what they should, lintian finds no error in them, and unpacked somewhere they
# run. They are made of the build that is there: script/package makes them of one for use.
#
#   debian_test.sh <build folder>
set -euo pipefail

build=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

fail() {
    echo "$*" >&2
    exit 1
}
for tool in dpkg-deb dpkg-shlibdeps lintian; do
    command -v "$tool" >/dev/null || { echo "there is no $tool"; exit 77; }
done

cpack --config "$build/CPackConfig.cmake" -B "$root/packages" >"$root/log" 2>&1 || { cat "$root/log"; fail "cpack"; }
packages=("$root"/packages/*.deb)
[ ${#packages[@]} -eq 4 ] || fail "not four packages: ${packages[*]}"
lintian --fail-on error --allow-root "${packages[@]}" || fail "lintian finds errors"

for package in "${packages[@]}"; do
    dpkg-deb -x "$package" "$root/all"
done
has() { [ -e "$root/all/usr/$1" ] || fail "usr/$1 is in no package"; }
has bin/update
has bin/stmctl
has bin/virtual-board
has include/stm_com_funcs.h
has share/bash-completion/completions/stmctl
has share/man/man1/stmctl.1.gz
owner() { grep -q " \./usr/$2" <<<"$(dpkg-deb -c "$root"/packages/"$1"_*.deb)" || fail "$2 is not in $1"; }
owner libstm-com-funcs0 'lib/.*libstm_com_funcs\.so\.0 ->'
owner libstm-com-funcs-dev 'lib/.*libstm_com_funcs\.so ->'
owner stm-com-tools lib/udev/rules.d/60-spidev.rules
owner virtual-board 'lib/.*virtual-board/libvirtual-board\.so$'

# A path of their own: nothing of the machine's is meant.
cd "$root"
PATH=$root/all/usr/bin:$PATH
said=$(virtual-board --count-time stmctl state) || fail "stmctl state ends in $?"
[ "$said" = "application (2)" ] || fail "stmctl state: $said"
[ "$(virtual-board --count-time update -state)" = 2 ] || fail "update -state"
[ "$(virtual-board --count-time stmctl records -n 10 --format csv | wc -l)" -eq 11 ] || fail "ten records"
