// Finds out who writes to the ring, as far as that is visible from outside.
#pragma once

#include "stmctl/ring/segment.hpp"

#include <string>
#include <vector>

namespace stmctl
{

enum class WriterState {
    none,    // is there, and no writer has left its mark
    writing, // a stmctl ring write
    several, // of them: their records mix
    ended,   // as it should
    killed,  // or crashed: its mark says that it is writing
    foreign, // there are other programs, which may write or read
    unseen,  // processes that cannot be inspected have it attached
};

struct RingWriter {
    WriterState state = WriterState::none;
    std::vector<pid_t> processes; // those that the words name

    std::string words() const;
    const char *name() const; // "writing"
};

// The processes are those of attached_processes before we attached it ourselves.
RingWriter writer_of(const Segment &segment, const std::vector<pid_t> &processes, WriterMark mark);

// The flag that makes RingBuffer_Open("w") fail, or the one for "r". No program that does what the
// module does ever sets it.
const char *flag_words(uint8_t flag);

// Whether all numbers are in the ranges that the module's operations leave.
bool is_plausible(const RingBuffer &ring);

} // namespace stmctl
