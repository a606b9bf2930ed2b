# In the virtual machine: a list of commands that virtual-board has run, too; the kernel's parameter "list"
# names it.
mkdir -p "/results/$list" "/home/$list"
cd "/home/$list" && sh /test/run_commands.sh /test/guest_door.sh "/test/$list.list" "/results/$list"
