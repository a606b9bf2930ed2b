# Runs the commands of a file in the virtual machine, and prints the file with what they really show, on
# both channels, and how they end: as a walkthrough, with "[STATUS]" where it is not 0.
#
#   run_scenes.sh FILE
export LC_ALL=C
dialogue=/home/dialogue
. /test/guest_door.sh

# The driver gives the device up, and takes it again.
unbind() {
    echo spi1.0 >/sys/bus/spi/drivers/spidev/unbind
}

rebind() {
    echo spi1.0 >/sys/bus/spi/drivers/spidev/bind
}

# wait_until COMMAND...: until it succeeds, for half a minute of the machine's time at most
wait_until() {
    tries=0
    until "$@" 2>/dev/null; do
        tries=$((tries + 1))
        [ $tries -lt 3000 ] || { echo "waited in vain: $*"; return 1; }
        sleep 0.01
    done
}

# In the middle of an exchange no signal wakes a process.
is_in_exchange() {
    grep -q '^State:.D' "/proc/$1/status"
}

wait_for_exchange() {
    wait_until is_in_exchange $1
}

has_lines() {
    [ -e "$1" ] && [ "$(wc -l <"$1")" -ge "$2" ]
}

has_ring() {
    stmctl ring status >/dev/null
}

while IFS= read -r line; do
    case $line in
    '#'* | '') printf '%s\n' "$line" ;;
    '$ '*)
        printf '%s\n' "$line"
        { eval "${line#\$ }"; } 2>&1 </dev/null
        status=$?
        [ $status -eq 0 ] || printf '[%d]\n' $status
        ;;
    esac
done <"$1"
exit 0
