# Runs commands one after another, all on one board, and keeps what each of them leaves. The same on this
# machine and in a virtual one, where busybox reads it.
#
#   run_commands.sh DOOR LIST OUT
#
# DOOR defines on_board, which runs a program on the board "board" with the fault and the answer in
# $fault and $answer and adds to the transcript $dialogue. A line of LIST is a number, a tab and a
# command. Of command 7 stay in OUT: 7.command, 7.out, 7.err, 7.status, 7.dialogue and 7.board.
door=$1
list=$2
out=$3
export LC_ALL=C

fault=
answer=
stmctl() {
    on_board stmctl "$@"
}
update() {
    on_board update "$@"
}
front_end() {
    on_board front_end "$@"
}

# The files of the board: those that are words as they are; the flash and the memory by their checksum,
# after a command that is for them.
show_board() {
    grep -H '' board/mode board/version board/settings board/spi-mode 2>/dev/null
    case $command in
    *flash* | *update* | *poke* | *text*) md5sum board/flash.bin board/memory.bin ;;
    esac
}

. "$door"
while IFS='	' read -r number command; do
    echo "$number $command"
    dialogue=$out/$number.dialogue
    printf '%s\n' "$command" >"$out/$number.command"
    { eval "$command"; } >"$out/$number.out" 2>"$out/$number.err" </dev/null
    echo $? >"$out/$number.status"
    fault=
    answer=
    [ ! -d board ] || show_board >"$out/$number.board"
    if [ -e endless ]; then
        echo "killed after a minute: $(cat endless)"
        exit 1
    fi
done <"$list"
exit 0
