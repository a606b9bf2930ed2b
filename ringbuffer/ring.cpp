// The ring in shared memory: 160 slots, a writer's fields and a reader's. Two processes use it
// without a lock, and a third may have damaged it: each field is loaded once, and an index is
// checked before it is used.
#include "ringbuffer/ring.hpp"

#include "link/link.hpp"
#include "link/report.hpp"
#include "link/stm_com_funcs.h"
#include "ringbuffer/ring_record.hpp"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

using namespace stm;

static_assert(sizeof(RingRecord) == RINGBUFFER_SLOT_SIZE && sizeof(RingBuffer) == RINGBUFFER_SIZE);
static_assert(offsetof(RingBuffer, writer_open) == 7680);
static_assert(offsetof(RingBuffer, reader_open) == 7681);
static_assert(offsetof(RingBuffer, write_index) == 7684);
static_assert(offsetof(RingBuffer, mark) == 7688);
static_assert(offsetof(RingBuffer, read_pos) == 7692);
static_assert(offsetof(RingBuffer, count) == 7696);
static_assert(offsetof(RingBuffer, values_left) == 7700);

namespace
{

constexpr int RINGBUFFER_CREATED = offsetof(RingBuffer, writer_open);
constexpr int RINGBUFFER_PERMISSIONS = 0666;
constexpr int32_t LAST_SLOT = RINGBUFFER_SLOTS - 1;
constexpr int32_t MOST_COUNTED = RINGBUFFER_SLOTS - 1; // kept: one less than there are slots

// Plain loads and stores to the machine, but each is made exactly once, whatever the other process
// does to the field in the meantime.

template <typename Field>
Field load(const Field &field)
{
    return *static_cast<const volatile Field *>(&field);
}

template <typename Field>
void store(Field &field, Field value)
{
    *static_cast<volatile Field *>(&field) = value;
}

[[noreturn]] void die(const char *text)
{
    report_errno(text);
    exit(1);
}

bool holds(int handle, int side)
{
    return stm_link.ring != nullptr && handle == side;
}

// Index arithmetic wraps at 32 bits: a damaged field may hold anything.
int32_t sum(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

int32_t next_index(int32_t index)
{
    const int32_t next = sum(index, 1);
    return next > LAST_SLOT ? 0 : next;
}

int32_t index_before(int32_t index, int32_t distance)
{
    const int32_t before = sum(index, static_cast<int32_t>(0 - static_cast<uint32_t>(distance)));
    return before < 0 ? sum(before, RINGBUFFER_SLOTS) : before;
}

bool is_slot(int32_t index)
{
    return index >= 0 && index <= LAST_SLOT;
}

RingRecord *slot_at(int32_t index)
{
    return is_slot(index) ? &stm_link.ring->slots[index] : nullptr;
}

void decrement_if_positive(int32_t &field)
{
    const int32_t value = load(field);
    if (value > 0) {
        store(field, value - 1);
    }
}

int open_for_writing(RingBuffer &ring)
{
    if (load(ring.writer_open) == 1) {
        return -1;
    }
    store(ring.write_index, 0);
    return RINGBUFFER_WRITER;
}

// Kept: the reader clears the count, which belongs to the writer.
int open_for_reading(RingBuffer &ring)
{
    if (load(ring.reader_open) == 1) {
        return -1;
    }
    store(ring.mark, 0);
    store(ring.read_pos, 0);
    store(ring.count, 0);
    store(ring.values_left, 0);
    return RINGBUFFER_READER;
}

// The next slot is filled, then announced, then counted.
// Kept: a reader that lags is ignored; the oldest records are overwritten.
template <typename Fill>
int put(int handle, Fill fill)
{
    if (!holds(handle, RINGBUFFER_WRITER)) {
        return -1;
    }
    RingBuffer &ring = *stm_link.ring;
    const int32_t index = load(ring.write_index);
    if (!is_slot(index)) {
        return -1;
    }
    fill(ring.slots[index]);
    store(ring.write_index, next_index(index));
    const int32_t count = load(ring.count);
    if (count < MOST_COUNTED) {
        store(ring.count, count + 1);
    }
    return 1;
}

} // namespace

int RingBuffer_Attach()
{
    const int id = shmget(RINGBUFFER_KEY, RINGBUFFER_SIZE, IPC_CREAT | RINGBUFFER_PERMISSIONS);
    if (id < 0) {
        die("shmget (ringbuffer space)");
    }
    void *address = shmat(id, nullptr, 0);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the all-ones address is the system's failure
    if (address == reinterpret_cast<void *>(-1)) {
        die("shmat (ringbuffer space)");
    }
    stm_link.ring = static_cast<RingBuffer *>(address);
    const pid_t own = getpid();
    shmid_ds status = {};
    if (shmctl(id, IPC_STAT, &status) < 0) {
        die("shmctl (ringbuffer space)");
    }
    if (status.shm_cpid != own) {
        return 0;
    }
    store<uint8_t>(stm_link.ring->reader_open, 0);
    store<uint8_t>(stm_link.ring->writer_open, 0);
    return RINGBUFFER_CREATED;
}

// Kept: opening sets neither flag, so that nobody is kept out unless a third party sets one; and
// an unknown mode opens the writer's side without changing anything.
int RingBuffer_Open(const char *mode)
{
    if (stm_link.ring == nullptr) {
        return -1;
    }
    if (strcmp(mode, "w") == 0) {
        return open_for_writing(*stm_link.ring);
    }
    if (strcmp(mode, "r") == 0) {
        return open_for_reading(*stm_link.ring);
    }
    return RINGBUFFER_WRITER;
}

int RingBuffer_Close(int handle)
{
    if (holds(handle, RINGBUFFER_WRITER)) {
        store<uint8_t>(stm_link.ring->writer_open, 0);
        return 1;
    }
    if (holds(handle, RINGBUFFER_READER)) {
        store<uint8_t>(stm_link.ring->reader_open, 0);
        return 1;
    }
    return -1;
}

int RingBuffer_PutValue(int handle, const RingRecord *record)
{
    return put(handle, [record](RingRecord &slot) { memcpy(&slot, record, sizeof(slot)); });
}

int stm::ring_put_from_wire(int handle, const uint8_t *record)
{
    return put(handle, [record](RingRecord &slot) { ring_record_fill(slot, record); });
}

int RingBuffer_NewValueAvailable(int handle)
{
    if (!holds(handle, RINGBUFFER_READER)) {
        return -1;
    }
    return load(stm_link.ring->mark) != load(stm_link.ring->write_index) ? 1 : 0;
}

int RingBuffer_MarkLastValue(int handle)
{
    if (!holds(handle, RINGBUFFER_READER)) {
        return -1;
    }
    RingBuffer &ring = *stm_link.ring;
    const int32_t count = load(ring.count);
    const int32_t index = load(ring.write_index);
    store(ring.values_left, count);
    store(ring.mark, index);
    return 1;
}

RingRecord *RingBuffer_GetFirstValue(int handle)
{
    if (!holds(handle, RINGBUFFER_READER)) {
        return nullptr;
    }
    return RingBuffer_SeekValue(handle, load(stm_link.ring->values_left));
}

// Kept: the reader decrements the count that the writer increments.
RingRecord *RingBuffer_GetNextValue(int handle)
{
    if (!holds(handle, RINGBUFFER_READER)) {
        return nullptr;
    }
    RingBuffer &ring = *stm_link.ring;
    const int32_t index = next_index(load(ring.read_pos));
    store(ring.read_pos, index);
    decrement_if_positive(ring.count);
    decrement_if_positive(ring.values_left);
    return slot_at(index);
}

int RingBuffer_GetValuesLeft(int handle)
{
    return holds(handle, RINGBUFFER_READER) ? load(stm_link.ring->values_left) : -1;
}

RingRecord *RingBuffer_GetWriteSlot(int handle)
{
    return holds(handle, RINGBUFFER_READER) ? slot_at(load(stm_link.ring->write_index)) : nullptr;
}

RingRecord *RingBuffer_SeekValue(int handle, int n)
{
    if (!holds(handle, RINGBUFFER_READER)) {
        return nullptr;
    }
    RingBuffer &ring = *stm_link.ring;
    const int32_t index = index_before(load(ring.mark), n);
    store(ring.read_pos, index);
    return slot_at(index);
}

RingRecord *RingBuffer_PeekValue(int handle, int n)
{
    if (!holds(handle, RINGBUFFER_READER)) {
        return nullptr;
    }
    return slot_at(index_before(load(stm_link.ring->mark), n));
}
