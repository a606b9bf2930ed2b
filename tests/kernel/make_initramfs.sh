#!/usr/bin/env bash
# Packs what runs in the virtual machine: busybox, the module, programs with the libraries that they
# load, and the tests' own files.
#
#   make_initramfs.sh x86-64|armhf FOLDER PROGRAM...
#
# FOLDER holds busybox and virtual_wire.ko, and gets initramfs.
set -euo pipefail
here=$(realpath "$(dirname "$0")")
case $1 in
x86-64) strip=strip libraries=/ loaded_by=ldd ;;
armhf) strip=arm-linux-gnueabihf-strip libraries=/usr/arm-linux-gnueabihf loaded_by=needed_by ;;
esac
folder=$2
shift 2

root=$folder/root
rm -rf "$root"
mkdir -p "$root"/{bin,dev,proc,sys,test}

# What a program of another architecture loads, as far as names can tell.
needed_by() {
    local name path
    for name in $(LC_ALL=C readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p') ld-linux-armhf.so.3; do
        path=$libraries/lib/$name
        echo "$path"
        [ "$1" = "$path" ] || [ -e "$root/lib/$name" ] || needed_by "$path"
    done
}

# A library goes where the program looks for it.
add_library() {
    local place=$root/${1#"$libraries"}
    if [ ! -e "$place" ]; then
        mkdir -p "$(dirname "$place")"
        "$strip" -o "$place" "$(realpath "$1")"
        chmod 755 "$place"
    fi
}

for program in "$@"; do
    "$strip" -o "$root/bin/$(basename "$program")" "$program"
    for library in $("$loaded_by" "$program" 2>/dev/null | grep -o '/[^ ]*' | sort -u); do
        add_library "$library"
    done
done
cp "$folder/busybox" "$root/bin/busybox"
cp "$folder/virtual_wire.ko" "$root/"
install -m 755 "$here/guest_init.sh" "$root/init"
cp "$here"/{run_commands,run_scenes,show_scenes,guest_door,test_commands,test_scenes,test_bufsiz}.sh \
    "$here"/{scenes,bufsiz_small,bufsiz_large}.txt "$root/test/"
(cd "$root" && find . | cpio --quiet -o -H newc -R 0:0) >"$folder/initramfs"
