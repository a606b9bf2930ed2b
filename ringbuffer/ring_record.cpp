// The record of a slot: the wire's with some of its fields in other places.
#include "ringbuffer/ring_record.hpp"

#include "readout/render_fields.hpp"

#include <array>
#include <cstring>

namespace stm
{

template char *render_fields_text<STM_RING_RECORD_FIELDS>(const uint8_t *, char *);
template char *render_fields_csv<STM_RING_RECORD_FIELDS>(const uint8_t *, char *);

namespace
{

// Bytes that lie side by side on the wire and in the slot.
struct Move {
    int32_t from;
    int32_t to;
    int32_t size;
};

struct Moves {
    std::array<Move, std::size(STM_RING_RECORD_FIELDS) + 1> list = {};
    size_t count = 0;
};

// Where each byte of the slot comes from, by the names of the fields; the marker is first in both.
consteval Moves moves_to_slot()
{
    std::array<int32_t, RINGBUFFER_SLOT_SIZE> sources = {};
    for (const RecordField &field : STM_RING_RECORD.fields) {
        const RecordField &wire = field_named(STM_RECORD_TEMP, field.name);
        for (int32_t i = 0; i < wire_size(wire.wire); ++i) {
            sources[static_cast<size_t>(field.offset + i)] = wire.offset + i;
        }
    }
    Moves moves;
    for (int32_t to = 0; to < RINGBUFFER_SLOT_SIZE; ++to) {
        const int32_t from = sources[static_cast<size_t>(to)];
        Move &last = moves.list[moves.count == 0 ? 0 : moves.count - 1];
        if (moves.count > 0 && from == last.from + last.size) {
            ++last.size;
        } else {
            moves.list[moves.count++] = {from, to, 1};
        }
    }
    return moves;
}
constexpr Moves MOVES = moves_to_slot();
static_assert(MOVES.count == 6, "Uen and negIe lie elsewhere, which cuts the record into six");

} // namespace

RingRecord ring_record_from_wire(const uint8_t *record)
{
    RingRecord slot;
    auto *bytes = reinterpret_cast<uint8_t *>(&slot);
    [&]<size_t... I>(std::index_sequence<I...>)
    {
        (memcpy(bytes + MOVES.list[I].to, record + MOVES.list[I].from, MOVES.list[I].size), ...);
    }
    (std::make_index_sequence<MOVES.count>());
    return slot;
}

} // namespace stm
