// ring status: what the ring is like.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/record/ring_slot.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/ring/segment.hpp"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>

namespace stmctl
{

namespace
{

std::string moment(time_t time)
{
    tm parts = {};
    char text[32] = "never";
    if (time != 0 && localtime_r(&time, &parts) != nullptr) {
        strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
    }
    return text;
}

void print_segment(const Segment &segment)
{
    const shmid_ds &info = segment.info;
    print(fmt::format("segment     id {}, key {}, {} bytes\n", segment.id, RINGBUFFER_KEY,
                      info.shm_segsz));
    print(fmt::format("owner       {}, mode {:04o}\n", user_words(info.shm_perm.uid),
                      static_cast<unsigned>(info.shm_perm.mode) & 0777U));
    print(fmt::format("made by     {}\n", process_name(info.shm_cpid)));
    print(fmt::format("last use    {}\n",
                      info.shm_lpid == 0 ? "never attached" : process_name(info.shm_lpid)));
    print(fmt::format("            attached {}, detached {}\n", moment(info.shm_atime),
                      moment(info.shm_dtime)));
    print(fmt::format("attached    {}\n", attached_words(segment)));
}

const char *flag_words(uint8_t flag)
{
    return flag == 0 ? "free" : flag == 1 ? "taken, nobody can open it" : "damaged";
}

struct SlotCounts {
    int whole = 0;
    int empty = 0;
    int damaged = 0;
};

SlotCounts count_slots(const RingBuffer &ring)
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

void print_newest(const RingBuffer &ring)
{
    constexpr int32_t BEFORE = RINGBUFFER_SLOTS - 1;
    const RingRecord &newest = ring.slots[(ring.write_index + BEFORE) % RINGBUFFER_SLOTS];
    if (is_whole(newest)) {
        print(fmt::format("newest      rel_t {}, nr {}\n", static_cast<uint32_t>(newest.rel_t),
                          newest.nr));
    }
}

bool is_plausible(const RingBuffer &ring)
{
    constexpr int32_t LAST = RINGBUFFER_SLOTS - 1;
    const auto inside = [](int32_t index) { return index >= 0 && index <= LAST; };
    return inside(ring.write_index) && inside(ring.mark) && inside(ring.read_pos) &&
           inside(ring.count) && inside(ring.values_left) && ring.writer_open <= 1 &&
           ring.reader_open <= 1;
}

ExitStatus print_ring(const RingBuffer &ring)
{
    const SlotCounts slots = count_slots(ring);
    print(fmt::format("writer      {}; fills slot {} next\n", flag_words(ring.writer_open),
                      ring.write_index));
    print(fmt::format("reader      {}; at slot {}, mark {}, values left {}\n",
                      flag_words(ring.reader_open), ring.read_pos, ring.mark, ring.values_left));
    print(fmt::format("count       {} records put and not taken\n", ring.count));
    print(fmt::format("slots       {} hold whole records, {} are empty, {} fail their checksum\n",
                      slots.whole, slots.empty, slots.damaged));
    if (!is_plausible(ring)) {
        throw Failure(ExitStatus::failed,
                      "the ring is damaged: indices are 0 to 159, flags 0 or 1");
    }
    print_newest(ring);
    return ExitStatus::done;
}

ExitStatus show_status()
{
    const Segment segment = existing_segment();
    print_segment(segment);
    if (segment.info.shm_segsz < RINGBUFFER_SIZE) {
        throw Failure(
            ExitStatus::failed,
            fmt::format("it is too small for a ring, which has {} bytes", RINGBUFFER_SIZE));
    }
    return print_ring(RingView(segment.id).copy());
}

} // namespace

Action declare_ring_status(CLI::App &)
{
    return show_status;
}

} // namespace stmctl
