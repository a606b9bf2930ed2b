// The ring as arithmetic.
#include "tests/ringbuffer/ring_model.hpp"

#include "link/stm_com_funcs.h"
#include "tests/ringbuffer/segment_bytes.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

namespace
{

constexpr int ASTRAY = -2;
constexpr std::array MODES = {"w", "r", "x"};

Bytes counted_up()
{
    Bytes bytes(SLOT_SIZE);
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<uint8_t>(0xC0 + i);
    }
    return bytes;
}

int32_t wrapped(int64_t value)
{
    return static_cast<int32_t>(static_cast<uint32_t>(value));
}

int slot_or_none(int32_t index)
{
    return index >= 0 && index < 160 ? index : -1;
}

int32_t behind(int32_t mark, int32_t n)
{
    const int32_t index = wrapped(int64_t{mark} - n);
    return index < 0 ? index + 160 : index;
}

void take_one(Bytes &segment, Field counter)
{
    const int32_t value = field_of(segment.data(), counter);
    set_field(segment.data(), {counter, value > 0 ? value - 1 : value});
}

const char *mode_of(int n)
{
    return MODES[static_cast<uint32_t>(n) % MODES.size()];
}

int model_open(Bytes &segment, int, int n)
{
    uint8_t *bytes = segment.data();
    if (*mode_of(n) == 'w' && segment[WRITER_OPEN] != 1) {
        set_field(bytes, {WRITE_INDEX, 0});
        return 1;
    }
    if (*mode_of(n) == 'r' && segment[READER_OPEN] != 1) {
        for (const Field field : {MARK, READ_POS, COUNT, VALUES_LEFT}) {
            set_field(bytes, {field, 0});
        }
        return 2;
    }
    return *mode_of(n) == 'x' ? 1 : -1;
}

int model_close(Bytes &segment, int handle, int)
{
    if (handle != 1 && handle != 2) {
        return -1;
    }
    segment[handle == 1 ? WRITER_OPEN : READER_OPEN] = 0;
    return 1;
}

int model_put(Bytes &segment, int handle, int)
{
    uint8_t *bytes = segment.data();
    const int32_t index = field_of(bytes, WRITE_INDEX);
    if (handle != 1 || slot_or_none(index) < 0) {
        return -1;
    }
    std::copy(MODEL_RECORD.begin(), MODEL_RECORD.end(),
              segment.begin() + std::ptrdiff_t{48} * index);
    set_field(bytes, {WRITE_INDEX, index == 159 ? 0 : index + 1});
    const int32_t count = field_of(bytes, COUNT);
    set_field(bytes, {COUNT, count <= 158 ? count + 1 : count});
    return 1;
}

int model_available(Bytes &segment, int handle, int)
{
    if (handle != 2) {
        return -1;
    }
    return field_of(segment.data(), MARK) == field_of(segment.data(), WRITE_INDEX) ? 0 : 1;
}

int model_mark(Bytes &segment, int handle, int)
{
    if (handle != 2) {
        return -1;
    }
    set_field(segment.data(), {VALUES_LEFT, field_of(segment.data(), COUNT)});
    set_field(segment.data(), {MARK, field_of(segment.data(), WRITE_INDEX)});
    return 1;
}

int model_peek(Bytes &segment, int handle, int n)
{
    return handle == 2 ? slot_or_none(behind(field_of(segment.data(), MARK), n)) : -1;
}

int model_seek(Bytes &segment, int handle, int n)
{
    if (handle == 2) {
        set_field(segment.data(), {READ_POS, behind(field_of(segment.data(), MARK), n)});
    }
    return model_peek(segment, handle, n);
}

int model_first(Bytes &segment, int handle, int)
{
    return model_seek(segment, handle, field_of(segment.data(), VALUES_LEFT));
}

int model_next(Bytes &segment, int handle, int)
{
    if (handle != 2) {
        return -1;
    }
    const int32_t next = wrapped(int64_t{field_of(segment.data(), READ_POS)} + 1);
    const int32_t index = next > 159 ? 0 : next;
    set_field(segment.data(), {READ_POS, index});
    take_one(segment, COUNT);
    take_one(segment, VALUES_LEFT);
    return slot_or_none(index);
}

int model_left(Bytes &segment, int handle, int)
{
    return handle == 2 ? field_of(segment.data(), VALUES_LEFT) : -1;
}

int model_write_slot(Bytes &segment, int handle, int)
{
    return handle == 2 ? slot_or_none(field_of(segment.data(), WRITE_INDEX)) : -1;
}

int number_of(const RingRecord *slot, const uint8_t *segment)
{
    if (slot == nullptr) {
        return -1;
    }
    const auto distance = reinterpret_cast<intptr_t>(slot) - reinterpret_cast<intptr_t>(segment);
    const bool is_slot = distance >= 0 && distance < 7680 && distance % SLOT_SIZE == 0;
    return is_slot ? static_cast<int>(distance / SLOT_SIZE) : ASTRAY;
}

int run_open(int, int n, const uint8_t *)
{
    return RingBuffer_Open(mode_of(n));
}

int run_put(int handle, int, const uint8_t *)
{
    return RingBuffer_PutValue(handle, reinterpret_cast<const RingRecord *>(MODEL_RECORD.data()));
}

template <int (*OPERATION)(int)>
int run_plain(int handle, int, const uint8_t *)
{
    return OPERATION(handle);
}

template <RingRecord *(*OPERATION)(int)>
int run_slot(int handle, int, const uint8_t *segment)
{
    return number_of(OPERATION(handle), segment);
}

template <RingRecord *(*OPERATION)(int, int)>
int run_distant(int handle, int n, const uint8_t *segment)
{
    return number_of(OPERATION(handle, n), segment);
}

constexpr RingOperation OPERATIONS[] = {
    {"Open", run_open, model_open},
    {"Close", run_plain<RingBuffer_Close>, model_close},
    {"PutValue", run_put, model_put},
    {"NewValueAvailable", run_plain<RingBuffer_NewValueAvailable>, model_available},
    {"MarkLastValue", run_plain<RingBuffer_MarkLastValue>, model_mark},
    {"GetFirstValue", run_slot<RingBuffer_GetFirstValue>, model_first},
    {"GetNextValue", run_slot<RingBuffer_GetNextValue>, model_next},
    {"GetValuesLeft", run_plain<RingBuffer_GetValuesLeft>, model_left},
    {"GetWriteSlot", run_slot<RingBuffer_GetWriteSlot>, model_write_slot},
    {"SeekValue", run_distant<RingBuffer_SeekValue>, model_seek},
    {"PeekValue", run_distant<RingBuffer_PeekValue>, model_peek},
};

} // namespace

const Bytes MODEL_RECORD = counted_up();

std::span<const RingOperation> ring_operations()
{
    return OPERATIONS;
}
