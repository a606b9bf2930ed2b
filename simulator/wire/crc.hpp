// The checksum of the wire, bit by bit, as the co-processor's firmware computes it.
#pragma once

#include <cstdint>
#include <span>

namespace simulator
{

// CRC-16/GENIBUS: polynomial x^16 + x^12 + x^5 + 1, register starts with ones, result inverted.
uint16_t bitwise_crc(std::span<const uint8_t> bytes);

} // namespace simulator
