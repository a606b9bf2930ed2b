# Programs on the board behind the kernel: a daemon answers for as long as each of them runs, as the
# power of a virtual board lasts. Its first line says that it has the controller's device.
give_answer() {
    [ -z "$answer" ] || echo "${answer%%=*} = ${answer#*=}" >>board/answers
}

begin_power() {
    mkdir -p board
    [ -e /run/ready ] || mkfifo /run/ready
    give_answer
    wire-daemon /dev/virtual-wire "$PWD/board" "$dialogue" "$@" >/run/ready &
    daemon=$!
    read -r ready </run/ready || { echo 'the daemon did not begin' >&2; return 1; }
}

end_power() {
    kill $daemon
    wait $daemon 2>/dev/null || true
}

# A minute of the machine's time is more than any of them takes; some wait without end for what is lost.
# One is enough to tell that the test has failed.
on_board() {
    begin_power $fault || return 125
    timeout -s KILL 60 "$@"
    ended=$?
    end_power
    [ $ended -ne 137 ] || echo "$*" >endless
    return $ended
}
