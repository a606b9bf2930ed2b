// Reads the ring at a position of its own.
//
// The writer only announces the slot that it fills next, modulo 160, and a restarted one begins at
// slot 0. The slots show what happened in between, because no two records are alike. As long as the
// slot before our position is unchanged, the writer has not wrapped around to it, and everything
// after it is whole and in order. An index that went back while the last slot is unchanged is a
// restart.
#pragma once

#include "stmctl/ring/segment.hpp"

#include <array>
#include <vector>

namespace stmctl
{

class SlotFollower
{
  public:
    struct Look {
        std::vector<RingRecord> records; // the new ones, the oldest first
        bool overrun = false;            // older ones were overwritten before they were read
        bool restarted = false;          // the writer began at slot 0 again
    };

    explicit SlotFollower(const RingView &view);

    // What the ring holds, without what an earlier writer has left; the position is then after it.
    Look everything();
    Look look();

  private:
    using Slots = std::array<RingRecord, RINGBUFFER_SLOTS>;

    int32_t write_index() const;
    bool overtaken() const;
    bool has_restarted(int32_t end) const;
    void copy_slots(Slots &slots) const;
    void learn(const Slots &slots, int32_t end, int32_t writing);
    std::vector<RingRecord> take(int32_t begin, int32_t end) const;
    Look accept(int32_t begin, int32_t end);
    std::vector<RingRecord> rest_of_writer() const;
    Look follow_restart(int32_t end);
    void leave_out_earlier_writer();
    Look start_over();

    const RingView &view_;
    Slots known_ = {}; // what the slots held at the last look
    int32_t position_ = 0;
    int32_t unsure_ = 0;           // the slot that was being written when we learned it
    bool begins_at_start_ = false; // nothing taken since everything, slot 0 is filled next
    int looks_in_vain_ = 0;        // in a row, although the index announced something
};

} // namespace stmctl
