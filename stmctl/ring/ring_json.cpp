// The ring as JSON.
#include "stmctl/ring/ring_json.hpp"

#include "stmctl/output/json.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

std::string json_of_processes(const std::vector<pid_t> &processes)
{
    JsonArray all;
    for (const pid_t process : processes) {
        JsonObject one;
        one.add("process", int64_t{process});
        one.add("words", process_name(process));
        all.add_json(one.json());
    }
    return all.json();
}

void add_moment(JsonObject &object, const char *name, time_t time)
{
    if (time == 0) {
        object.add_null(name);
    } else {
        object.add(name, moment(time));
    }
}

std::string json_of_segment(const Segment &segment)
{
    const shmid_ds &info = segment.info;
    JsonObject object;
    object.add("id", int64_t{segment.id});
    object.add("key", int64_t{RINGBUFFER_KEY});
    object.add("bytes", static_cast<int64_t>(info.shm_segsz));
    object.add("owner", user_words(info.shm_perm.uid));
    object.add("mode", fmt::format("{:04o}", static_cast<unsigned>(info.shm_perm.mode) & 0777U));
    object.add("made_by", int64_t{info.shm_cpid});
    object.add("last_use", int64_t{info.shm_lpid});
    add_moment(object, "attached_at", info.shm_atime);
    add_moment(object, "detached_at", info.shm_dtime);
    object.add("attached", static_cast<int64_t>(info.shm_nattch));
    return object.json();
}

std::string json_of_writer(const RingBuffer &ring, const RingWriter &writer)
{
    JsonObject object;
    object.add("state", writer.name());
    object.add("words", writer.words());
    object.add_json("processes", json_of_processes(writer.processes));
    object.add("flag", int64_t{ring.writer_open});
    object.add("next_slot", int64_t{ring.write_index});
    return object.json();
}

std::string json_of_reader(const RingBuffer &ring)
{
    JsonObject object;
    object.add("flag", int64_t{ring.reader_open});
    object.add("slot", int64_t{ring.read_pos});
    object.add("mark", int64_t{ring.mark});
    object.add("values_left", int64_t{ring.values_left});
    return object.json();
}

void add_slots(JsonObject &object, const RingBuffer &ring)
{
    const SlotCounts slots = ring_slots(ring);
    JsonObject counts;
    counts.add("whole", int64_t{slots.whole});
    counts.add("empty", int64_t{slots.empty});
    counts.add("damaged", int64_t{slots.damaged});
    object.add_json("slots", counts.json());
    const RingRecord *newest = newest_of(ring);
    if (newest == nullptr) {
        object.add_null("newest");
        return;
    }
    JsonObject record;
    record.add("rel_t", int64_t{static_cast<uint32_t>(newest->rel_t)});
    record.add("nr", int64_t{newest->nr});
    object.add_json("newest", record.json());
}

} // namespace

std::string ring_json(const RingLook &look)
{
    JsonObject object;
    object.add_json("segment", json_of_segment(look.segment));
    object.add_json("processes", json_of_processes(look.processes));
    if (!look.ring) {
        object.add_null("writer");
        return object.json();
    }
    object.add_json("writer", json_of_writer(*look.ring, look.writer));
    object.add_json("reader", json_of_reader(*look.ring));
    object.add("count", int64_t{look.ring->count});
    add_slots(object, *look.ring);
    object.add("damaged", !is_plausible(*look.ring));
    return object.json();
}

} // namespace stmctl
