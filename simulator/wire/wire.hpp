// The bytes that mean something on the wire, each under one name.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace simulator
{

// What the host sends to fetch something.
inline constexpr uint8_t STATUS_POLL = 0x33;
inline constexpr uint8_t DATA_POLL = 0x44;
inline constexpr uint8_t FILLER = 0x66;

// What comes back.
inline constexpr uint8_t IDLE = 0x00;     // driven while there is nothing to say yet
inline constexpr uint8_t UNDRIVEN = 0xFF; // read while nobody drives the line
inline constexpr uint8_t READY = 0x55; // acknowledges a frame; announces an answer, block or record
inline constexpr uint8_t STATUS_CHECKSUM_ERROR = 0xF0;
inline constexpr uint8_t STATUS_ADDRESS_ERROR = 0xF1;

inline bool all_are(std::span<const uint8_t> bytes, uint8_t value)
{
    return std::ranges::all_of(bytes, [value](uint8_t byte) { return byte == value; });
}

} // namespace simulator
