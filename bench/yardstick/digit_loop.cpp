// The general digit loop.
#include "bench/yardstick/digit_loop.hpp"

#include <algorithm>

namespace bench
{

char *digit_loop_unsigned(uint32_t value, char *buffer, int32_t base)
{
    constexpr char DIGITS[] = "0123456789abcdefghijklmnopqrstuvwxyz";
    const auto divisor = static_cast<uint32_t>(base);
    char *end = buffer;
    do {
        *end++ = DIGITS[value % divisor];
        value /= divisor;
    } while (value != 0);
    *end = '\0';
    std::reverse(buffer, end);
    return buffer;
}

char *digit_loop(int32_t value, char *buffer, int32_t base)
{
    const auto bits = static_cast<uint32_t>(value);
    if (value < 0) {
        *buffer = '-';
        digit_loop_unsigned(0 - bits, buffer + 1, base);
    } else {
        digit_loop_unsigned(bits, buffer, base);
    }
    return buffer;
}

} // namespace bench
