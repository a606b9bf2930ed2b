// Numbers to text in bases 2 to 36: digit by digit from the lowest, then reversed. Base 10 has a
// faster algorithm of its own.
#include "link/decimal.hpp"
#include "link/stm_com_funcs.h"

#include <type_traits>

using namespace stm;

namespace
{

// '0' is in the middle: the digit for d is found at d and at -d, so that a negative remainder need
// not be negated, which the lowest number cannot be.
constexpr char STM_DIGITS[] =
    "zyxwvutsrqponmlkjihgfedcba9876543210123456789abcdefghijklmnopqrstuvwxyz";
constexpr int ZERO_DIGIT = 35;
static_assert(sizeof(STM_DIGITS) - 1 == 71 && STM_DIGITS[ZERO_DIGIT] == '0');

bool is_base(int32_t base)
{
    return static_cast<uint32_t>(base) - 2 <= 34;
}

void reverse(char *first, char *last)
{
    for (; first < last; ++first, --last) {
        const char kept = *first;
        *first = *last;
        *last = kept;
    }
}

template <typename Number>
char *convert_in_base(Number value, char *buffer, int32_t base)
{
    if (!is_base(base)) {
        *buffer = '\0';
        return buffer;
    }
    const Number divisor = static_cast<Number>(base);
    const bool negative = value < Number{0};
    char *end = buffer;
    do {
        const Number quotient = value / divisor;
        *end++ = STM_DIGITS[ZERO_DIGIT + static_cast<int32_t>(value - quotient * divisor)];
        value = quotient;
    } while (value != 0);
    if (negative) {
        *end++ = '-';
    }
    *end = '\0';
    reverse(buffer, end - 1);
    return buffer;
}

template <typename Number>
char *convert(Number value, char *buffer, int32_t base)
{
    if (base != 10) {
        return convert_in_base(value, buffer, base);
    }
    *stm::write_decimal(buffer, value) = '\0';
    return buffer;
}

} // namespace

char *stm_itoa(int32_t value, char *buffer, int32_t base)
{
    return convert(value, buffer, base);
}

char *stm_ltoa(long value, char *buffer, int32_t base)
{
    return convert(static_cast<int32_t>(value), buffer, base);
}

char *stm_utoa(uint32_t value, char *buffer, int32_t base)
{
    return convert(value, buffer, base);
}
