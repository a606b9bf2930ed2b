// ring status: shows the state of the ring.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/counted.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/ring/ring_json.hpp"
#include "stmctl/ring/ring_look.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

void print_segment(const Segment &segment, const std::vector<pid_t> &processes)
{
    const shmid_ds &info = segment.info;
    print(fmt::format("segment     id {}, key {}, {}\n", segment.id, RINGBUFFER_KEY,
                      counted(info.shm_segsz, "byte", "bytes")));
    print(fmt::format("owner       {}, mode {:04o}\n", user_words(info.shm_perm.uid),
                      static_cast<unsigned>(info.shm_perm.mode) & 0777U));
    print(fmt::format("made by     {}\n", process_name(info.shm_cpid)));
    print(fmt::format("last use    {}\n",
                      info.shm_lpid == 0 ? "never attached" : process_name(info.shm_lpid)));
    print(fmt::format("            attached {}, detached {}\n", moment(info.shm_atime),
                      moment(info.shm_dtime)));
    print(fmt::format("attached    {}\n", attached_words(segment, processes)));
}

void check_ring(const RingBuffer &ring)
{
    if (!is_plausible(ring)) {
        throw Failure(ExitStatus::failed,
                      "the ring is damaged: an index is not 0 to 159, or a flag not 0 or 1");
    }
}

void print_ring(const RingBuffer &ring, const RingWriter &writer)
{
    const SlotCounts slots = ring_slots(ring);
    print(fmt::format("writer      {}; its flag is {}; fills slot {} next\n", writer.words(),
                      flag_words(ring.writer_open), ring.write_index));
    print(fmt::format("reader      {}; at slot {}, mark {}, values left {}\n",
                      flag_words(ring.reader_open), ring.read_pos, ring.mark, ring.values_left));
    print(fmt::format("count       {} {} put and not taken\n", ring.count,
                      ring.count == 1 ? "record" : "records"));
    print(fmt::format("slots       {} hold whole records, {} are empty, {} fail their checksum\n",
                      slots.whole, slots.empty, slots.damaged));
    if (const RingRecord *newest = newest_of(ring)) {
        print(fmt::format("newest      rel_t {}, nr {}\n", static_cast<uint32_t>(newest->rel_t),
                          newest->nr));
    }
}

ExitStatus show_status(bool as_json)
{
    const RingLook look(existing_segment());
    if (as_json) {
        print(ring_json(look) + '\n');
    } else {
        print_segment(look.segment, look.processes);
    }
    if (!look.ring) {
        throw Failure(ExitStatus::failed,
                      fmt::format("the segment is too small for a ring, which has {} bytes",
                                  RINGBUFFER_SIZE));
    }
    if (!as_json) {
        print_ring(*look.ring, look.writer);
    }
    check_ring(*look.ring);
    return ExitStatus::done;
}

} // namespace

Action declare_ring_status(CLI::App &command)
{
    auto as_json = std::make_shared<bool>(false);
    add_flag(command, "--json", *as_json, "as JSON: an object");
    return [as_json] { return show_status(*as_json); };
}

} // namespace stmctl
