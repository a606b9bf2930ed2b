// The record of a slot.
#include "ringbuffer/ring_record.hpp"

#include "link/bytes.hpp"

namespace
{

int32_t signed32(const uint8_t *at)
{
    return static_cast<int32_t>(get_le32(at));
}

int16_t signed16(const uint8_t *at)
{
    return static_cast<int16_t>(get_le16(at));
}

} // namespace

RingRecord ring_record_from_wire(const uint8_t *record)
{
    return {
        .marker = record[0],
        .nr = record[1],
        .temp = get_le16(record + 2),
        .rel_t = signed32(record + 4),
        .U1e = signed32(record + 12),
        .U2e = signed32(record + 16),
        .U3e = signed32(record + 20),
        .Uen = signed32(record + 8),
        .I1 = signed32(record + 28),
        .I2 = signed32(record + 32),
        .I3 = signed32(record + 36),
        .negIe = signed32(record + 24),
        .BE1 = signed16(record + 40),
        .BE2 = signed16(record + 42),
        .BE = static_cast<int8_t>(record[44]),
        .buffered = record[45],
        .checksum = get_le16(record + 46),
    };
}
