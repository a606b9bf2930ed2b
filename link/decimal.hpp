// Numbers in decimal, written from their first digit on, two digits at a time. Divisions are by
// constants, which become multiplications: the board's processor cannot divide.
#pragma once

#include <cstdint>
#include <cstring>

namespace stm
{

struct DigitPairs {
    char text[2 * 100]; // "00" to "99"
};

consteval DigitPairs digit_pairs()
{
    DigitPairs pairs = {};
    for (int i = 0; i < 100; ++i) {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

inline constexpr DigitPairs DIGIT_PAIRS = digit_pairs();

// Each of these writes from a place on and returns the place after what it has written.

inline char *write_two_digits(char *to, uint32_t number)
{
    memcpy(to, DIGIT_PAIRS.text + 2 * number, 2);
    return to + 2;
}

inline char *write_four_digits(char *to, uint32_t number)
{
    const uint32_t hundreds = number / 100;
    return write_two_digits(write_two_digits(to, hundreds), number - hundreds * 100);
}

// Below 100, without a leading zero.
inline char *write_below_hundred(char *to, uint32_t number)
{
    if (number >= 10) {
        return write_two_digits(to, number);
    }
    *to = static_cast<char>('0' + number);
    return to + 1;
}

// Below 10000, likewise.
inline char *write_below_myriad(char *to, uint32_t number)
{
    if (number < 100) {
        return write_below_hundred(to, number);
    }
    const uint32_t hundreds = number / 100;
    return write_two_digits(write_below_hundred(to, hundreds), number - hundreds * 100);
}

constexpr int32_t LONGEST_DECIMAL = sizeof("-2147483648") - 1;

inline char *write_decimal(char *to, uint32_t number)
{
    if (number < 10'000) {
        return write_below_myriad(to, number);
    }
    const uint32_t myriads = number / 10'000;
    const uint32_t rest = number - myriads * 10'000;
    if (myriads < 10'000) {
        return write_four_digits(write_below_myriad(to, myriads), rest);
    }
    const uint32_t top = myriads / 10'000; // 42 at most
    to = write_four_digits(write_below_hundred(to, top), myriads - top * 10'000);
    return write_four_digits(to, rest);
}

// The lowest number of all has no magnitude among the signed ones, but among the unsigned.
inline char *write_decimal(char *to, int32_t number)
{
    const auto bits = static_cast<uint32_t>(number);
    if (number < 0) {
        *to = '-';
        return write_decimal(to + 1, 0 - bits);
    }
    return write_decimal(to, bits);
}

} // namespace stm
