// The ring's writer: whole blocks of the live stream over a link without latency, and single
// records.
#include "bench/exchange.hpp"
#include "bench/harness.hpp"
#include "bench/yardstick/plain_ring.hpp"
#include "link/link.hpp"
#include "ringbuffer/ring.hpp"
#include "ringbuffer/ring_record.hpp"

#include <algorithm>
#include <cstring>
#include <span>

using namespace stm;

namespace bench
{

namespace
{

RingBuffer ring;
int32_t polls = 0;

// Stops the stream after all blocks have been delivered.
int stop_behind_last_block(char *line)
{
    memcpy(line, STM_STOP_LINE, sizeof(STM_STOP_LINE));
    return polls++ == BLOCK_COUNT ? 1 : 0;
}

int take(const char *text, int)
{
    benchmark::DoNotOptimize(text);
    return 0;
}

void our_blocks()
{
    polls = 0;
    stm_ringbuffer_acquire(stop_behind_last_block, take);
}

void plain_blocks()
{
    polls = 0;
    plain_acquire(ring, stop_behind_last_block);
}

void our_puts()
{
    const DataSet &set = data_sets()[0];
    for (int32_t i = 0; i < RECORD_COUNT; ++i) {
        benchmark::DoNotOptimize(ring_put_from_wire(RINGBUFFER_WRITER, set.record(i)));
    }
}

void plain_puts()
{
    const DataSet &set = data_sets()[0];
    for (int32_t i = 0; i < RECORD_COUNT; ++i) {
        plain_put(ring, set.record(i));
        benchmark::ClobberMemory();
    }
}

void attach_ring()
{
    ring = {};
    stm_link.ring = &ring;
    serve(data_sets()[0]);
}

bool same_bytes(const RingBuffer &one, const RingBuffer &other)
{
    return std::ranges::equal(std::as_bytes(std::span(&one, 1)),
                              std::as_bytes(std::span(&other, 1)));
}

bool blocks_agree()
{
    attach_ring();
    our_blocks();
    const RingBuffer ours = ring;
    attach_ring();
    plain_blocks();
    return ours.count > 0 && same_bytes(ours, ring);
}

// A plain put only copies, so its record is repacked here.
bool puts_agree()
{
    constexpr int32_t COUNT = RINGBUFFER_SLOTS + 40;
    RingBuffer plain = {};
    attach_ring();
    for (int32_t i = 0; i < COUNT; ++i) {
        const RingRecord record = ring_record_from_wire(data_sets()[0].record(i));
        ring_put_from_wire(RINGBUFFER_WRITER, data_sets()[0].record(i));
        plain_put(plain, &record);
    }
    return ring.write_index == 40 && same_bytes(ring, plain);
}

} // namespace

bool contenders_agree()
{
    return blocks_agree() && puts_agree();
}

void register_contenders()
{
    attach_ring();
    add("block_ring/ours", BLOCK_COUNT, our_blocks);
    add("block_ring/bytewise", BLOCK_COUNT, plain_blocks);
    add("ring_put/ours", RECORD_COUNT, our_puts);
    add("ring_put/copy", RECORD_COUNT, plain_puts);
}

} // namespace bench
