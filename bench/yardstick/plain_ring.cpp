// The plain writer.
#include "bench/yardstick/plain_ring.hpp"

#include "bench/data_set.hpp"
#include "bench/wire_record.hpp"
#include "bench/yardstick/byte_table.hpp"
#include "bench/yardstick/plain_link.hpp"

#include <cstddef>
#include <cstring>

namespace bench
{

namespace
{

constexpr uint8_t COMMAND = 0x02;
constexpr uint8_t LIVE = 'U';
constexpr uint8_t POLL = 0x44;
constexpr uint8_t READY = 0x55;
constexpr uint32_t HEADER_SIZE = 20;

struct Move {
    size_t from;
    size_t to;
    size_t size;
};

#define MOVE(field)                                                                                \
    {                                                                                              \
        offsetof(WireRecord, field), offsetof(RingRecord, field), sizeof(WireRecord::field)        \
    }
constexpr Move MOVES[] = {
    MOVE(marker), MOVE(nr),  MOVE(temp), MOVE(rel_t),    MOVE(U1e),      MOVE(U2e),
    MOVE(U3e),    MOVE(Uen), MOVE(I1),   MOVE(I2),       MOVE(I3),       MOVE(negIe),
    MOVE(BE1),    MOVE(BE2), MOVE(BE),   MOVE(buffered), MOVE(checksum),
};
#undef MOVE

PlainLink plain_link;

RingRecord repack(const uint8_t *record)
{
    uint8_t bytes[sizeof(RingRecord)];
    for (const Move &move : MOVES) {
        for (size_t i = 0; i < move.size; ++i) {
            bytes[move.to + i] = record[move.from + i];
        }
    }
    return std::bit_cast<RingRecord>(bytes);
}

bool poll_header(StmPollFn poll)
{
    char line[STM_LINE_SIZE];
    plain_link.clear();
    memset(plain_link.tx, POLL, HEADER_SIZE);
    plain_link.exchange(HEADER_SIZE);
    return poll(line) == 0;
}

// The length follows the 0x55, and the data follow the length.
int32_t fetch_block()
{
    uint8_t *rx = plain_link.rx;
    uint32_t at = 0;
    while (rx[at] != READY) {
        ++at;
    }
    const uint32_t length = static_cast<uint32_t>(rx[at + 1] << 8 | rx[at + 2]);
    const uint32_t held = HEADER_SIZE - at - 3;
    memmove(rx, rx + at + 3, held);
    plain_link.fetch_behind(held, length - held);
    plain_link.request(COMMAND, LIVE);
    return static_cast<int32_t>(length);
}

void put_records(RingBuffer &ring, int32_t length)
{
    for (int32_t at = 0; at < length; at += RECORD_SIZE) {
        const uint8_t *record = plain_link.rx + at;
        if (byte_table_crc(record, CHECKED_BYTES) != wire_record(record).checksum) {
            return;
        }
        const RingRecord repacked = repack(record);
        plain_put(ring, &repacked);
    }
}

} // namespace

void plain_put(RingBuffer &ring, const void *record)
{
    memcpy(&ring.slots[ring.write_index], record, sizeof(RingRecord));
    ring.write_index = ring.write_index + 1 < RINGBUFFER_SLOTS ? ring.write_index + 1 : 0;
    if (ring.count < RINGBUFFER_SLOTS - 1) {
        ++ring.count;
    }
}

void plain_acquire(RingBuffer &ring, StmPollFn poll)
{
    ring.write_index = 0;
    plain_link.request(COMMAND, LIVE);
    while (poll_header(poll)) {
        put_records(ring, fetch_block());
    }
}

} // namespace bench
