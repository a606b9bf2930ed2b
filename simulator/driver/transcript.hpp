// The dialogue as text, one line per exchange:
//
//     NUMBER SECONDS LENGTH > BYTES SENT < BYTES RECEIVED ; how the co-processor understood it
//     NUMBER SECONDS LENGTH > BYTES SENT ! ERRNO
//
// The time is that of the exchange's end, counted from the opening of the device. Bytes are
// hexadecimal; four or more equal ones in a row are written as one and their number: 66*4096.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

struct Exchange;

std::string transcript_line(const Exchange &exchange, std::chrono::nanoseconds time);

std::string transcript_bytes(std::span<const uint8_t> bytes);

} // namespace simulator
