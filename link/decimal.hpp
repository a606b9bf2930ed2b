// Numbers in decimal, written from the first digit on.
#pragma once

#include <cstdint>

namespace stm
{

constexpr int32_t LONGEST_DECIMAL = sizeof("-2147483648") - 1;

// Writes at a position and returns the position after the last digit, which may have been written
// to: the caller must write what follows there, even if it is only a NUL.
char *write_decimal(char *to, uint32_t number);

// A sign is always written, and overwritten if there is none: measured values change theirs too
// often for a branch. The magnitude is unsigned, since that of the lowest number does not fit an
// int.
inline char *write_decimal(char *to, int32_t number)
{
    const int32_t sign = number >> 31; // -1 below 0, else 0
    const uint32_t magnitude = static_cast<uint32_t>(number ^ sign) - static_cast<uint32_t>(sign);
    *to = '-';
    return write_decimal(to - sign, magnitude);
}

} // namespace stm
