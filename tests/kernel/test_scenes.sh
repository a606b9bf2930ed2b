# In the virtual machine: the probe's questions, on a board that has just been switched on, and the scenes.
. /test/guest_door.sh
mkdir /home/probe /home/scenes
dialogue=/home/dialogue
(cd /home/probe && begin_power && device_probe >/results/answers 2>&1 && end_power)
cd /home/scenes && sh /test/show_scenes.sh /test/scenes.txt
