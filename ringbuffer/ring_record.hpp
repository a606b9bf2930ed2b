// The record in a slot: made from one received from the wire, and shown in a format of its own.
#pragma once

#include "link/stm_com_funcs.h"
#include "readout/record_format.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>

namespace stm
{

static_assert(std::endian::native == std::endian::little,
              "slots hold numbers in the machine's order, and are read like the wire's");

// clang-format off
inline constexpr RecordField STM_RING_RECORD_FIELDS[] = {
    {"stm_uint8_t  nr   : ",        "nr",        offsetof(RingRecord, nr),       Wire::u8},
    {"stm_uint16_t omega_t: ",      "temp",      offsetof(RingRecord, temp),     Wire::u16},
    {"stm_int32_t  rel_t: ",        "rel_t",     offsetof(RingRecord, rel_t),    Wire::i32, Line::ends_group, Csv::without_sign},
    {"stm_int32_t  U1e  : ",        "U1e",       offsetof(RingRecord, U1e),      Wire::i32},
    {"stm_int32_t  U2e  : ",        "U2e",       offsetof(RingRecord, U2e),      Wire::i32},
    {"stm_int32_t  U3e  : ",        "U3e",       offsetof(RingRecord, U3e),      Wire::i32},
    {"stm_int32_t  Uen  : ",        "Uen",       offsetof(RingRecord, Uen),      Wire::i32, Line::ends_group},
    {"stm_int32_t  I1   : ",        "I1",        offsetof(RingRecord, I1),       Wire::i32},
    {"stm_int32_t  I2   : ",        "I2",        offsetof(RingRecord, I2),       Wire::i32},
    {"stm_int32_t  I3   : ",        "I3",        offsetof(RingRecord, I3),       Wire::i32},
    {"stm_int32_t  -Ie  : ",        "negIe",     offsetof(RingRecord, negIe),    Wire::i32, Line::ends_group},
    {"stm_int16_t  BE1  : ",        "BE1",       offsetof(RingRecord, BE1),      Wire::i16},
    {"stm_int16_t  BE2  : ",        "BE2",       offsetof(RingRecord, BE2),      Wire::i16},
    {"stm_int8_t   BE   : ",        "BE",        offsetof(RingRecord, BE),       Wire::u8}, // kept: 0 to 255 here
    {"stm_uint8    buffered  : ",   "buffered",  offsetof(RingRecord, buffered), Wire::u8},
    {"stm_int8_t   checksum  : ",   "checksum",  offsetof(RingRecord, checksum), Wire::u16, Line::ends_group},
};
// clang-format on

inline constexpr RecordFormat STM_RING_RECORD =
    record_format<STM_RING_RECORD_FIELDS>(RINGBUFFER_SLOT_SIZE);
static_assert(record_is_covered(STM_RING_RECORD) && record_has_room(STM_RING_RECORD));

// Bytes that are adjacent both on the wire and in the slot.
struct RingRecordMove {
    int32_t from;
    int32_t to;
    int32_t size;
};

struct RingRecordMoves {
    std::array<RingRecordMove, std::size(STM_RING_RECORD_FIELDS) + 1> list = {};
    size_t count = 0;
};

// Where each byte of the slot comes from, by the names of the fields; the marker is first in both.
consteval RingRecordMoves moves_to_slot()
{
    int32_t sources[RINGBUFFER_SLOT_SIZE] = {};
    for (const RecordField &field : STM_RING_RECORD.fields) {
        const RecordField &wire = field_named(STM_RECORD_TEMP, field.name);
        for (int32_t i = 0; i < wire_size(wire.wire); ++i) {
            sources[field.offset + i] = wire.offset + i;
        }
    }
    RingRecordMoves moves;
    for (int32_t to = 0; to < RINGBUFFER_SLOT_SIZE; ++to) {
        const int32_t from = sources[to];
        RingRecordMove &last = moves.list[moves.count == 0 ? 0 : moves.count - 1];
        if (moves.count > 0 && from == last.from + last.size) {
            ++last.size;
        } else {
            moves.list[moves.count++] = {from, to, 1};
        }
    }
    return moves;
}
inline constexpr RingRecordMoves RING_RECORD_MOVES = moves_to_slot();
static_assert(RING_RECORD_MOVES.count == 6,
              "Uen and negIe lie elsewhere, which cuts the record into six");

template <size_t... I>
void ring_record_move(uint8_t *slot, const uint8_t *record, std::index_sequence<I...>)
{
    (memcpy(slot + RING_RECORD_MOVES.list[I].to, record + RING_RECORD_MOVES.list[I].from,
            RING_RECORD_MOVES.list[I].size),
     ...);
}

// Makes a slot's record from one received from the wire.
// Kept: the checksum is the wire's, although the fields have moved.
inline void ring_record_fill(RingRecord &slot, const uint8_t *record)
{
    ring_record_move(reinterpret_cast<uint8_t *>(&slot), record,
                     std::make_index_sequence<RING_RECORD_MOVES.count>());
}

RingRecord ring_record_from_wire(const uint8_t *record);

} // namespace stm
