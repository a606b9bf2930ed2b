// A snapshot of the ring from outside.
#pragma once

#include "stmctl/ring/writer.hpp"

#include <optional>
#include <string>
#include <vector>

namespace stmctl
{

struct RingLook {
    // Throws a Failure if the segment cannot be attached.
    explicit RingLook(const Segment &segment);

    Segment segment;
    std::vector<pid_t> processes;   // that have it attached, without this one
    std::optional<RingBuffer> ring; // none in a segment that is too small for one
    RingWriter writer;
};

struct SlotCounts {
    int whole = 0;
    int empty = 0;
    int damaged = 0;
};

SlotCounts ring_slots(const RingBuffer &ring);

// Null if it is not whole.
const RingRecord *newest_of(const RingBuffer &ring);

// "2026-03-01 12:00:00", of a time that is not 0; "never" of 0.
std::string moment(time_t time);

} // namespace stmctl
