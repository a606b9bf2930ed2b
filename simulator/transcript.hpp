// The dialogue as text, one line an exchange:
//
//     NUMBER SECONDS LENGTH > BYTES SENT < BYTES RECEIVED ; what the co-processor made of it
//     NUMBER SECONDS LENGTH > BYTES SENT ! ERRNO
//
// The time is that of the exchange's end, since the device was opened. Bytes are hexadecimal; four
// or more equal ones in a row are written as one and their number, 66*4096.
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
