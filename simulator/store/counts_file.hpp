// The files in which a board's counts can be read while a program uses it, and afterwards.
#pragma once

#include "simulator/board/counts.hpp"

#include <array>
#include <string>

namespace simulator
{

// They are mapped and not open, so that no descriptor gets in the program's way, an update needs no
// system call, and the counts survive the program, however it ends.
class CountsFile
{
  public:
    // Creates both files anew. Empty, or why they cannot be created.
    std::string open(const std::string &directory);

    // Writes what has changed. Empty, or why a life that has ended cannot be recorded.
    std::string write(const Tally &tally);

    // From now on the files belong to another process.
    void leave() { numbers_ = nullptr; }

  private:
    std::string note_lives(const Tally &tally);
    void write_number(size_t row, uint64_t number);

    char *numbers_ = nullptr;
    std::array<uint64_t, COUNT_ROWS> written_{};
    size_t lives_ = 0; // recorded
    std::string lives_path_;
};

} // namespace simulator
