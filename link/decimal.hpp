// Numbers in decimal, written from their first digit on.
#pragma once

#include <cstdint>

namespace stm
{

constexpr int32_t LONGEST_DECIMAL = sizeof("-2147483648") - 1;

// Write from a place on, and return the place after the last digit, where the caller writes what
// follows, be it a NUL: there may be something else by then.
char *write_decimal(char *to, uint32_t number);

// A sign is written in any case, and overwritten where there is none: measured values change theirs
// too often for a branch. The lowest number of all has its magnitude among the unsigned ones.
inline char *write_decimal(char *to, int32_t number)
{
    const int32_t sign = number >> 31; // -1 below 0, else 0
    const uint32_t magnitude = static_cast<uint32_t>(number ^ sign) - static_cast<uint32_t>(sign);
    *to = '-';
    return write_decimal(to - sign, magnitude);
}

} // namespace stm
