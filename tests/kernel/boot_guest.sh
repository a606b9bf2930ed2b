#!/usr/bin/env bash
# Boots a virtual machine, and unpacks the results that it sends.
#
#   boot_guest.sh x86-64|armhf KERNEL INITRAMFS TEST OUT [KERNEL-PARAMETER...]
#
# The machine's time is counted in instructions: nothing depends on how fast this one is, and waits take no
# time. What lasts too long is ended in there, by that time; the limit here is for a machine that hangs.
set -euo pipefail
kernel=$2
initramfs=$3
test=$4
out=$5
case $1 in
x86-64) command=(qemu-system-x86_64 -machine q35) console=ttyS0 ;;
armhf) command=(qemu-system-arm -machine virt -cpu cortex-a15) console=ttyAMA0 ;;
esac
shift 5

rm -rf "$out"
mkdir -p "$out"
timeout --kill-after 10 1500 "${command[@]}" -accel tcg -icount shift=3,sleep=off -smp 1 -m 256 \
    -nodefaults -display none -no-reboot -serial "file:$out/serial" -kernel "$kernel" \
    -initrd "$initramfs" -append "console=$console quiet panic=-1 test=$test $*" 2>"$out/qemu" &
machine=$!
trap 'kill "$machine" 2>/dev/null || true' EXIT TERM INT
wait "$machine" || true

tr -d '\r' <"$out/serial" >"$out/shown"
sed '1,/^=== results$/d; /^=== end of results$/,$d' "$out/shown" |
    base64 -d 2>/dev/null | tar -xz -C "$out" 2>/dev/null || true
if ! grep -qx '=== status 0' "$out/shown"; then
    echo "boot_guest: the virtual machine did not get to the end; see $out" >&2
    sed '/^=== results$/,/^=== end of results$/d' "$out/shown" | tail -n 20 >&2
    [ ! -e "$out/log" ] || tail -n 20 "$out/log" >&2
    exit 1
fi
