# Programs on the board of this machine: virtual-board stands before the device. Time is counted.
# BOARD_WORDS are the words in front of a program, one to a line; PROGRAMS are the folders of programs.
mapfile -t board_words <<<"$BOARD_WORDS"

on_board() {
    local program=$1
    shift
    "${board_words[0]}" --board board --count-time --transcript "$dialogue" \
        ${fault:+--fault "$fault"} ${answer:+--answer "$answer"} "${board_words[@]:1}" \
        "$PROGRAMS/$program" "$@"
}
