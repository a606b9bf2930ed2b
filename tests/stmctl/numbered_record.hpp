// Records for a ring whose writer is the test itself.
#pragma once

#include "link/stm_com_funcs.h"

#include <cstdint>
#include <cstring>

inline constexpr int SLOTS = 160;

// A record with its checksum in the order of the protocol; no two numbers give the same record.
inline RingRecord numbered(int32_t number, int32_t measured = 0)
{
    RingRecord record = {};
    record.marker = 0x55;
    record.nr = static_cast<uint8_t>(static_cast<uint32_t>(number) % 255 + 1);
    record.rel_t = number;
    record.U1e = measured;
    record.Uen = ~number;
    uint8_t wire[46] = {};
    wire[0] = record.marker;
    wire[1] = record.nr;
    memcpy(wire + 4, &record.rel_t, 4);
    memcpy(wire + 8, &record.Uen, 4);
    memcpy(wire + 12, &record.U1e, 4);
    record.checksum = stm_crc16(wire, sizeof(wire));
    return record;
}
