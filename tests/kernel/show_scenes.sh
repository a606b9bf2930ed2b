# In the virtual machine: runs a file of scenes and keeps what it shows. Two minutes of the machine's time
# are several times what any of them takes.
#
#   show_scenes.sh FILE
timeout -s KILL 120 sh /test/run_scenes.sh "$1" >/results/scenes.txt
ended=$?
cat /results/scenes.txt
[ $ended -eq 0 ] || echo "ended with status $ended"
exit $ended
