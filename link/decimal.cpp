// Numbers in decimal, two digits at a time. Divisions are by constants, which become
// multiplications: the board's processor cannot divide.
#include "link/decimal.hpp"

#include <cstddef>
#include <cstring>

namespace stm
{

namespace
{

struct DigitPairs {
    char text[2 * 100]; // "00" to "99"
};

consteval DigitPairs digit_pairs()
{
    DigitPairs pairs = {};
    for (size_t i = 0; i < 100; ++i) {
        pairs.text[2 * i] = static_cast<char>('0' + i / 10);
        pairs.text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

constexpr DigitPairs DIGIT_PAIRS = digit_pairs();

// Each of these writes at a position and returns the position after what it has written.

char *write_two_digits(char *to, uint32_t number)
{
    memcpy(to, DIGIT_PAIRS.text + size_t{2} * number, 2);
    return to + 2;
}

// For numbers below 10000: 5243 / 2^19 exceeds a hundredth by so little that the result is correct
// up to 43698.
constexpr uint32_t hundreds_of(uint32_t number)
{
    return number * 5243 >> 19;
}
static_assert(hundreds_of(9999) == 99 && hundreds_of(43'698) == 436 && hundreds_of(43'699) == 437);

char *write_four_digits(char *to, uint32_t number)
{
    const uint32_t hundreds = hundreds_of(number);
    return write_two_digits(write_two_digits(to, hundreds), number - hundreds * 100);
}

// For numbers below 100: without a leading zero, and without a branch that could not be predicted.
// For one digit the pair's second character is copied, and what follows it is overwritten later.
char *write_below_hundred(char *to, uint32_t number)
{
    const uint32_t zeros = (number - 10) >> 31; // 1 below 10, else 0
    memcpy(to, DIGIT_PAIRS.text + size_t{2} * number + zeros, 2);
    return to + 2 - zeros;
}

// The same for numbers below 10000.
char *write_below_myriad(char *to, uint32_t number)
{
    if (number < 100) {
        return write_below_hundred(to, number);
    }
    const uint32_t hundreds = hundreds_of(number);
    return write_two_digits(write_below_hundred(to, hundreds), number - hundreds * 100);
}

} // namespace

char *write_decimal(char *to, uint32_t number)
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

} // namespace stm
