#!/bin/busybox sh
# The first process of the virtual machine: runs what the kernel's parameter "test" names, and sends what
# that leaves in /results over the serial line, as text between two lines of its own. The last line
# tells whether all of it has been run.
/bin/busybox --install -s /bin
mount -t proc proc /proc
mount -t sysfs sys /sys
mount -t devtmpfs dev /dev
mkdir -p /run /tmp /results /home
dmesg -n 1

send_results() {
    echo "=== results"
    tar -c -C /results . | gzip -1 | base64
    echo "=== end of results"
}

insmod /virtual_wire.ko && cd /home && sh "/test/test_$test.sh"
status=$?
dmesg >/results/dmesg
send_results
echo "=== status $status"
poweroff -f
