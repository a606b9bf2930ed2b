// Goal: ten million scattered numbers get the texts that the C library gives them.
#include "link/stm_com_funcs.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

namespace
{

constexpr int NUMBERS = 1'111'112; // for each of nine ways: ten million in all
constexpr uint64_t BOUNDARIES[] = {0,           1,          7,          8,
                                   9,           10,         15,         16,
                                   0x7FFFFFFE,  0x7FFFFFFF, 0x80000000, 0x80000001,
                                   0xFFFFFFF0,  0xFFFFFFF6, 0xFFFFFFF8, 0xFFFFFFFF,
                                   0x100000000, ULLONG_MAX, 1ULL << 63, (1ULL << 63) - 1};

constexpr size_t ROOM = 34;

// Of 64 random bits each of these takes what it has room for.
void write_int(uint64_t bits, char *buffer, int32_t base)
{
    stm_itoa(static_cast<int32_t>(bits), buffer, base);
}

void write_long(uint64_t bits, char *buffer, int32_t base)
{
    stm_ltoa(static_cast<long>(bits), buffer, base);
}

void write_unsigned(uint64_t bits, char *buffer, int32_t base)
{
    stm_utoa(static_cast<uint32_t>(bits), buffer, base);
}

void print_unsigned(uint32_t value, char *text, int32_t base)
{
    switch (base) {
    case 8:
        snprintf(text, ROOM, "%o", value);
        break;
    case 10:
        snprintf(text, ROOM, "%u", value);
        break;
    default:
        snprintf(text, ROOM, "%x", value);
        break;
    }
}

// The library has signs in base 10 only.
void print_signed(uint32_t bits, char *text, int32_t base)
{
    const auto value = static_cast<int32_t>(bits);
    if (base == 10) {
        snprintf(text, ROOM, "%d", value);
    } else if (value < 0) {
        *text = '-';
        print_unsigned(0 - bits, text + 1, base);
    } else {
        print_unsigned(bits, text, base);
    }
}

struct Way {
    const char *name;
    void (*write)(uint64_t bits, char *buffer, int32_t base);
    void (*print)(uint32_t bits, char *text, int32_t base);
    int32_t base;
    uint64_t seed;
};

constexpr Way WAYS[] = {
    {"itoa_8", write_int, print_signed, 8, 1},
    {"itoa_10", write_int, print_signed, 10, 2},
    {"itoa_16", write_int, print_signed, 16, 3},
    {"ltoa_8", write_long, print_signed, 8, 4},
    {"ltoa_10", write_long, print_signed, 10, 5},
    {"ltoa_16", write_long, print_signed, 16, 6},
    {"utoa_8", write_unsigned, print_unsigned, 8, 7},
    {"utoa_10", write_unsigned, print_unsigned, 10, 8},
    {"utoa_16", write_unsigned, print_unsigned, 16, 9},
};

// Without a visible pattern, the same in every run.
uint64_t scattered(uint64_t &state)
{
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state * 0x9E3779B97F4A7C15U;
}

// Of all lengths: the upper bits give way to copies of the lowest of them, as in a number with a
// sign.
uint64_t next_number(uint64_t &state)
{
    const uint64_t bits = scattered(state);
    const auto signed_bits = static_cast<int64_t>(bits);
    return static_cast<uint64_t>(signed_bits >> (scattered(state) >> 58));
}

testing::AssertionResult agrees(const Way &way, uint64_t bits)
{
    char actual[ROOM];
    char expected[1 + ROOM];
    way.write(bits, actual, way.base);
    way.print(static_cast<uint32_t>(bits), expected, way.base);
    if (strcmp(actual, expected) == 0) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "bits 0x" << std::hex << bits << std::dec << " in base " << way.base << ", seed "
           << way.seed << ": \"" << actual << "\" instead of \"" << expected << "\"";
}

class LibraryText : public testing::TestWithParam<Way>
{
};

TEST_P(LibraryText, is_that_of_the_numbers_at_the_boundaries)
{
    for (const uint64_t bits : BOUNDARIES) {
        EXPECT_TRUE(agrees(GetParam(), bits));
    }
}

TEST_P(LibraryText, is_that_of_scattered_numbers)
{
    uint64_t state = GetParam().seed;
    for (int i = 0; i < NUMBERS; ++i) {
        ASSERT_TRUE(agrees(GetParam(), next_number(state))) << "number " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, LibraryText, testing::ValuesIn(WAYS),
                         [](const auto &each) { return std::string(each.param.name); });

} // namespace
