// The files in which a board's counts can be read while a program uses it, and afterwards.
#pragma once

#include "simulator/board/counts.hpp"
#include "simulator/store/shared_state.hpp"

#include <string>

namespace simulator
{

// They are mapped and not open, so that no descriptor gets in the program's way, an update needs no
// system call, and the counts survive the program, however it ends.
class CountsFile
{
  public:
    // Creates both files anew, or uses those that are there. Empty, or why not.
    std::string begin(const std::string &directory);
    std::string join(const std::string &directory);

    // Writes what has changed since it was written, by whomever. Empty, or why a life that has ended
    // cannot be recorded.
    std::string write(const Tally &tally, SavedState &saved);

  private:
    std::string note_lives(const Tally &tally, uint64_t noted);
    void write_number(size_t row, uint64_t number);

    char *numbers_ = nullptr;
    std::string lives_path_;
};

} // namespace simulator
