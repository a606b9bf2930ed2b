# In the virtual machine: programs where the driver takes other lengths than usual.
mkdir /home/scenes
cd /home/scenes && sh /test/run_scenes.sh /test/bufsiz_$size.txt | tee /results/scenes.txt
