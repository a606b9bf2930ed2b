// A snapshot of the ring from outside.
#include "stmctl/ring/ring_look.hpp"

#include "stmctl/record/ring_slot.hpp"

#include <ctime>

namespace stmctl
{

RingLook::RingLook(const Segment &found) : segment(found), processes(attached_processes(found))
{
    if (segment.info.shm_segsz >= RINGBUFFER_SIZE) {
        const RingView view(segment.id);
        ring = view.copy();
        writer = writer_of(segment, processes, view.writer_mark());
    }
}

SlotCounts ring_slots(const RingBuffer &ring)
{
    SlotCounts counts;
    for (const RingRecord &slot : ring.slots) {
        const bool empty = is_empty(slot);
        const bool whole = !empty && is_whole(slot);
        counts.empty += empty ? 1 : 0;
        counts.whole += whole ? 1 : 0;
        counts.damaged += !empty && !whole ? 1 : 0;
    }
    return counts;
}

const RingRecord *newest_of(const RingBuffer &ring)
{
    constexpr int32_t BEFORE = RINGBUFFER_SLOTS - 1;
    const RingRecord &newest = ring.slots[(ring.write_index + BEFORE) % RINGBUFFER_SLOTS];
    return is_plausible(ring) && is_whole(newest) ? &newest : nullptr;
}

std::string moment(time_t time)
{
    tm parts = {};
    char text[32] = "never";
    if (time != 0 && localtime_r(&time, &parts) != nullptr) {
        strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
    }
    return text;
}

} // namespace stmctl
