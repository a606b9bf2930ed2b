# In the virtual machine: the commands that virtual-board has run, too; the scenes; the probe's questions.
for name in walkthrough commands; do
    mkdir -p /results/$name /work/$name
    (cd /work/$name && sh /test/run_commands.sh /test/guest_door.sh /test/$name.list /results/$name) ||
        exit 1
done
