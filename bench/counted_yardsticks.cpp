// Kept plain: who makes these faster moves the goals.
#include "bench/counted_yardsticks.hpp"

#include <algorithm>
#include <array>

namespace
{

constexpr auto TABLE = [] {
    std::array<uint16_t, 256> table = {};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t remainder = i << 8;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = remainder << 1 ^ ((remainder & 0x8000) != 0 ? 0x11021U : 0U);
        }
        table[i] = static_cast<uint16_t>(remainder);
    }
    return table;
}();

// Around the middle: the digit of d is found at d and at -d.
constexpr char DIGITS[] = "zyxwvutsrqponmlkjihgfedcba9876543210123456789abcdefghijklmnopqrstuvwxyz";
constexpr int32_t ZERO_DIGIT = 35;

} // namespace

uint16_t yardstick_crc16(const uint8_t *data, uint16_t length)
{
    uint16_t crc = 0xFFFF;
    for (uint32_t i = 0; i < length; ++i) {
        crc = static_cast<uint16_t>(TABLE[data[i] ^ (crc >> 8)] ^ (crc << 8));
    }
    return static_cast<uint16_t>(~crc);
}

char *yardstick_itoa(int32_t value, char *buffer, int32_t base)
{
    if (base < 2 || base > 36) {
        *buffer = '\0';
        return buffer;
    }
    const bool negative = value < 0;
    char *end = buffer;
    do {
        const int32_t quotient = value / base;
        *end++ = DIGITS[ZERO_DIGIT + (value - quotient * base)];
        value = quotient;
    } while (value != 0);
    if (negative) {
        *end++ = '-';
    }
    *end = '\0';
    std::reverse(buffer, end);
    return buffer;
}
