# In the virtual machine: programs where the driver takes other lengths than usual.
mkdir /home/scenes
cd /home/scenes && sh /test/show_scenes.sh /test/bufsiz_$size.txt
