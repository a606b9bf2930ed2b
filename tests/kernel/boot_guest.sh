#!/usr/bin/env bash
# Boots a virtual machine, and unpacks the results that it sends.
#
#   boot_guest.sh x86-64|armhf FOLDER TEST OUT [KERNEL-PARAMETER...]
#
# FOLDER holds kernel and initramfs. The machine's time is counted in instructions: nothing depends on
# how fast this one is, and waits take no time.
set -euo pipefail
folder=$2
test=$3
out=$4
case $1 in
x86-64) machine=(qemu-system-x86_64 -machine q35) console=ttyS0 ;;
armhf) machine=(qemu-system-arm -machine virt -cpu cortex-a15) console=ttyAMA0 ;;
esac
shift 4

rm -rf "$out"
mkdir -p "$out"
timeout --kill-after 10 400 "${machine[@]}" -accel tcg -icount shift=3,sleep=off -smp 1 -m 256 \
    -nodefaults -display none -no-reboot -serial "file:$out/serial" -kernel "$folder/kernel" \
    -initrd "$folder/initramfs" -append "console=$console quiet panic=-1 test=$test $*" 2>"$out/qemu" || true

tr -d '\r' <"$out/serial" | sed '1,/^=== results$/d; /^=== end of results$/,$d' |
    base64 -d 2>/dev/null | tar -xz -C "$out" 2>/dev/null || true
if ! tr -d '\r' <"$out/serial" | grep -qx '=== status 0'; then
    echo "boot_guest: the virtual machine did not get to the end; see $out" >&2
    grep -v "^[A-Za-z0-9+/=]*$" "$out/serial" | tail -n 20 >&2
    [ ! -e "$out/log" ] || tail -n 20 "$out/log" >&2
    exit 1
fi
