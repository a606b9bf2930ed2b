#!/usr/bin/env bash
# Makes what a virtual machine needs from the packages of one architecture: the kernel, busybox, and the
# controller's module, built for that kernel.
#
#   prepare_guest.sh x86-64|armhf FOLDER      with the packages in FOLDER/debs
#
# Leaves FOLDER/kernel, FOLDER/busybox and FOLDER/virtual_wire.ko.
set -euo pipefail
tree=$(realpath "$(dirname "$0")/../..")
folder=$(realpath "$2")
case $1 in
x86-64) make_words=() ;;
armhf) make_words=(ARCH=arm CROSS_COMPILE=arm-linux-gnueabihf-) ;;
esac
abi=$(<"$folder/debs/complete")

# Of the kernel's package only the kernel is unpacked: its modules are many times as large. The headers'
# makefile names the place where they would be installed.
unpack() {
    rm -rf "$folder/unpacked"
    mkdir "$folder/unpacked"
    for package in "$folder"/debs/{linux-headers,linux-kbuild,busybox}*.deb; do
        dpkg-deb -x "$package" "$folder/unpacked"
    done
    dpkg-deb --fsys-tarfile "$folder"/debs/linux-image*.deb | tar -x -C "$folder/unpacked" ./boot
    sed -i "s|/usr/src|$folder/unpacked/usr/src|" \
        "$folder/unpacked/usr/src/linux-headers-$abi/Makefile"
    cp "$folder/unpacked/bin/busybox" "$folder/busybox"
    take_kernel "$folder/unpacked/boot/vmlinuz-$abi"
    echo "$abi" >"$folder/unpacked/complete"
}

number_at() {
    od -A n -t "u$2" -j "$1" -N "$2" "$3" | tr -d ' '
}

# An x86 kernel boots in half the time if the machine need not unpack it. Its header says where the
# packed one is: behind the sectors of the setup and at an offset from there.
take_kernel() {
    cp "$1" "$folder/kernel"
    if [ "${#make_words[@]}" -eq 0 ]; then
        local begin=$((($(number_at 0x1F1 1 "$1") + 1) * 512 + $(number_at 0x248 4 "$1")))
        tail -c +$((begin + 1)) "$1" | head -c "$(number_at 0x24C 4 "$1")" |
            xz -dc --single-stream >"$folder/vmlinux" 2>/dev/null || true
        [ ! -s "$folder/vmlinux" ] || mv "$folder/vmlinux" "$folder/kernel"
    fi
}

# In a folder of its own: the kernel's build writes beside the sources.
build_module() {
    mkdir -p "$folder/module"
    cp -u "$tree"/simulator/kernel/{Kbuild,virtual_wire.c} "$folder/module/"
    make -s "${make_words[@]}" -C "$folder/unpacked/usr/src/linux-headers-$abi" \
        M="$folder/module" TREE="$tree" modules
    cp "$folder/module/virtual_wire.ko" "$folder/"
}

[ "$(cat "$folder/unpacked/complete" 2>/dev/null)" = "$abi" ] || unpack
build_module
