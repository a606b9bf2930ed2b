// What virtual-board passes to the library that it loads into a program, in environment variables.
#pragma once

#include "simulator/board/coprocessor.hpp"

#include <string>

namespace simulator
{

// The one that is read without the others.
inline constexpr char COUNT_TIME_VARIABLE[] = "VIRTUAL_BOARD_COUNT_TIME";

struct RunOptions {
    std::string directory;  // of the board; absolute
    std::string transcript; // file to append to; empty for none
    Behaviour behaviour;
    std::string fault_words; // the faults as they were given, separated by blanks
    bool counts_time = false;
    bool through = false; // to the real device
};

// "1 to 1000000"
std::string range_of(int Behaviour::*number);

// Sets a number of the board's behaviour. False if the words are not a number in its range.
bool set_number(RunOptions &options, int Behaviour::*number, const std::string &words);

// Adds the words of a fault. False if they are not understood; reason then says why.
bool add_fault(RunOptions &options, const std::string &words, std::string &reason);

// The board's options as words: programs that use a board at the same time share them, whether they
// count their time or not. Taken, they replace others; false if they are not understood.
std::string shared_words(const RunOptions &options);
bool take_shared_words(RunOptions &options, const std::string &words);

// Whether the board is left as it is without options.
bool has_usual_board(const RunOptions &options);

void put_into_environment(const RunOptions &options);

// False if the variables are not as put_into_environment writes them.
bool take_from_environment(RunOptions &options);

} // namespace simulator
