// A record with a temperature as it is on the wire, read and written by one copy.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace bench
{

struct WireRecord {
    uint8_t marker;
    uint8_t nr;
    uint16_t temp;
    uint32_t rel_t;
    int32_t Uen;
    int32_t U1e;
    int32_t U2e;
    int32_t U3e;
    int32_t negIe;
    int32_t I1;
    int32_t I2;
    int32_t I3;
    int16_t BE1;
    int16_t BE2;
    int8_t BE;
    uint8_t buffered;
    uint16_t checksum;
};
static_assert(sizeof(WireRecord) == 48 && std::endian::native == std::endian::little);

constexpr uint16_t CHECKED_BYTES = sizeof(WireRecord) - sizeof(uint16_t);

inline WireRecord wire_record(const uint8_t *bytes)
{
    WireRecord record;
    memcpy(&record, bytes, sizeof(record));
    return record;
}

} // namespace bench
