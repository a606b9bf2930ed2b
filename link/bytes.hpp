// Numbers of the wire, written byte by byte: the buffers have no alignment and the host any order.
#pragma once

#include <cstdint>

constexpr void put_le16(uint8_t *to, uint16_t value)
{
    to[0] = static_cast<uint8_t>(value);
    to[1] = static_cast<uint8_t>(value >> 8);
}

constexpr void put_le32(uint8_t *to, uint32_t value)
{
    put_le16(to, static_cast<uint16_t>(value));
    put_le16(to + 2, static_cast<uint16_t>(value >> 16));
}
