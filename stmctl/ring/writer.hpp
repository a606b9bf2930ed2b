// Who writes the ring, as far as that can be told from outside.
#pragma once

#include "stmctl/ring/segment.hpp"

#include <string>
#include <vector>

namespace stmctl
{

enum class WriterState {
    none,    // is there, and none has left its mark
    writing, // a stmctl ring write
    several, // of them: their records mix
    ended,   // as it should
    killed,  // or crashed: its mark says that it writes
    foreign, // there are programs that may write or read
    unseen,  // processes that may not be looked at have it attached
};

struct RingWriter {
    WriterState state = WriterState::none;
    std::vector<pid_t> processes; // those that the words name

    std::string words() const;
    const char *name() const; // "writing"
};

// Processes are as attached_processes has them, from before we attached it ourselves.
RingWriter writer_of(const Segment &segment, const std::vector<pid_t> &processes, WriterMark mark);

// The flag that keeps RingBuffer_Open("w") out, or its like for "r". No program sets it as long as
// it does what the module does.
const char *flag_words(uint8_t flag);

// Whether all numbers are such as the module's operations leave.
bool is_plausible(const RingBuffer &ring);

} // namespace stmctl
