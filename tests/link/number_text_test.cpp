// Goal: numbers of 32 bits become texts in every base from 2 to 36, the lowest of all too, and a
// base that is none gives the empty text; a buffer of 34 bytes is enough.
#include "link/stm_com_funcs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

namespace
{

constexpr size_t LONGEST = 34; // 32 binary digits, sign and NUL
constexpr char UNWRITTEN = '\xEE';
constexpr char DIGITS[] = "0123456789abcdefghijklmnopqrstuvwxyz";

// The ends of the numbers' range in a base.
struct Ends {
    int32_t base;
    const char *int_max;
    const char *below_int_min; // the digits of the lowest number, without its sign
    const char *uint_max;
};

constexpr Ends ENDS[] = {
    // clang-format off
    {2, "1111111111111111111111111111111", "10000000000000000000000000000000", "11111111111111111111111111111111"},
    {3, "12112122212110202101", "12112122212110202102", "102002022201221111210"},
    {4, "1333333333333333", "2000000000000000", "3333333333333333"},
    {5, "13344223434042", "13344223434043", "32244002423140"},
    {6, "553032005531", "553032005532", "1550104015503"},
    {7, "104134211161", "104134211162", "211301422353"},
    {8, "17777777777", "20000000000", "37777777777"},
    {9, "5478773671", "5478773672", "12068657453"},
    {10, "2147483647", "2147483648", "4294967295"},
    {11, "a02220281", "a02220282", "1904440553"},
    {12, "4bb2308a7", "4bb2308a8", "9ba461593"},
    {13, "282ba4aaa", "282ba4aab", "535a79888"},
    {14, "1652ca931", "1652ca932", "2ca5b7463"},
    {15, "c87e66b7", "c87e66b8", "1a20dcd80"},
    {16, "7fffffff", "80000000", "ffffffff"},
    {17, "53g7f548", "53g7f549", "a7ffda90"},
    {18, "3928g3h1", "3928g3h2", "704he7g3"},
    {19, "27c57h32", "27c57h33", "4f5aff65"},
    {20, "1db1f927", "1db1f928", "3723ai4f"},
    {21, "140h2d91", "140h2d92", "281d55i3"},
    {22, "ikf5bf1", "ikf5bf2", "1fj8b183"},
    {23, "ebelf95", "ebelf96", "1606k7ib"},
    {24, "b5gge57", "b5gge58", "mb994af"},
    {25, "8jmdnkm", "8jmdnkn", "hek2mgk"},
    {26, "6oj8ion", "6oj8ioo", "dnchbnl"},
    {27, "5ehncka", "5ehnckb", "b28jpdl"},
    {28, "4clm98f", "4clm98g", "8pfgih3"},
    {29, "3hk7987", "3hk7988", "76beigf"},
    {30, "2sb6cs7", "2sb6cs8", "5qmcpqf"},
    {31, "2d09uc1", "2d09uc2", "4q0jto3"},
    {32, "1vvvvvv", "2000000", "3vvvvvv"},
    {33, "1lsqtl1", "1lsqtl2", "3aokq93"},
    {34, "1d8xqrp", "1d8xqrq", "2qhxjlh"},
    {35, "15v22um", "15v22un", "2br45qa"},
    {36, "zik0zj", "zik0zk", "1z141z3"},
    // clang-format on
};

// Converts into a buffer with free room before and behind it. Only the text and its NUL may be
// written, and the buffer itself comes back.
template <typename Number>
std::string text_of(char *(*convert)(Number, char *, int32_t), Number value, int32_t base)
{
    std::string room(LONGEST + 16, UNWRITTEN);
    char *buffer = room.data() + 8;
    EXPECT_EQ(convert(value, buffer, base), buffer);
    const size_t end = room.find('\0');
    EXPECT_LT(end, 8 + LONGEST) << "34 bytes must do";
    EXPECT_EQ(room.substr(0, 8), std::string(8, UNWRITTEN));
    EXPECT_EQ(room.find_first_not_of(UNWRITTEN, end + 1), std::string::npos);
    return room.substr(8, end - 8);
}

std::string signed_text(int32_t value, int32_t base)
{
    return text_of(stm_itoa, value, base);
}

std::string long_text(int64_t value, int32_t base)
{
    return text_of(stm_ltoa, static_cast<long>(value), base);
}

std::string unsigned_text(uint32_t value, int32_t base)
{
    return text_of(stm_utoa, value, base);
}

// A number of both signed kinds.
void expect_signed(int32_t value, int32_t base, const std::string &text)
{
    EXPECT_EQ(signed_text(value, base), text) << value << " in base " << base;
    EXPECT_EQ(long_text(value, base), text) << value << " in base " << base;
}

// A number from 0 to the highest signed one, and its opposite.
void expect_number(int32_t value, int32_t base, const std::string &text)
{
    expect_signed(value, base, text);
    expect_signed(-value, base, value == 0 ? text : "-" + text);
    EXPECT_EQ(unsigned_text(static_cast<uint32_t>(value), base), text) << "base " << base;
}

// The magnitude's text from its highest digit down, counted off power by power.
std::string counted_off(int64_t magnitude, int64_t base)
{
    int64_t power = 1;
    while (power * base <= magnitude) {
        power *= base;
    }
    std::string text;
    for (; power > 0; power /= base) {
        int digit = 0;
        for (; magnitude >= power; magnitude -= power) {
            ++digit;
        }
        text += DIGITS[digit];
    }
    return text;
}

std::string counted_off_signed(int32_t value, int32_t base)
{
    const int64_t wide = value;
    return wide < 0 ? "-" + counted_off(-wide, base) : counted_off(wide, base);
}

// Numbers of all lengths without a visible pattern, the same in every run.
class ScatteredNumbers
{
  public:
    explicit ScatteredNumbers(uint32_t seed) : state(seed) {}

    uint32_t next()
    {
        const uint32_t number = scatter();
        return number >> (scatter() >> 27);
    }

  private:
    uint32_t scatter()
    {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<uint32_t>(state >> 32);
    }

    uint64_t state;
};

class EveryBase : public testing::TestWithParam<Ends>
{
};

class NoBase : public testing::TestWithParam<int32_t>
{
};

} // namespace

TEST_P(EveryBase, writes_each_digit_alone)
{
    for (int32_t digit = 0; digit < GetParam().base; ++digit) {
        expect_number(digit, GetParam().base, std::string(1, DIGITS[digit]));
    }
}

TEST_P(EveryBase, carries_into_a_second_and_a_third_digit)
{
    const int32_t base = GetParam().base;
    const std::string highest(1, DIGITS[base - 1]);
    expect_number(base, base, "10");
    expect_number(base + 1, base, "11");
    expect_number(base * base - base, base, highest + "0");
    expect_number(base * base - 1, base, highest + highest);
    expect_number(base * base, base, "100");
}

TEST_P(EveryBase, writes_the_ends_of_the_range)
{
    const int32_t base = GetParam().base;
    expect_number(INT_MAX, base, GetParam().int_max);
    expect_signed(INT_MIN, base, std::string("-") + GetParam().below_int_min);
    EXPECT_EQ(unsigned_text(0x80000000U, base), GetParam().below_int_min);
    EXPECT_EQ(unsigned_text(UINT_MAX, base), GetParam().uint_max);
}

TEST_P(EveryBase, agrees_with_counting_off_for_scattered_numbers)
{
    const int32_t base = GetParam().base;
    ScatteredNumbers numbers(static_cast<uint32_t>(base));
    for (int i = 0; i < 4000 && !HasFailure(); ++i) {
        const uint32_t number = numbers.next();
        const auto value = static_cast<int32_t>(i % 2 == 0 ? number : ~number);
        expect_signed(value, base, counted_off_signed(value, base));
        EXPECT_EQ(unsigned_text(number, base), counted_off(number, base))
            << number << " in base " << base;
    }
}

INSTANTIATE_TEST_SUITE_P(From2To36, EveryBase, testing::ValuesIn(ENDS),
                         [](const auto &each) { return std::to_string(each.param.base); });

TEST_P(NoBase, gives_the_empty_text_in_one_byte)
{
    for (const int32_t value : {0, 1, -1, INT_MAX, INT_MIN}) {
        expect_signed(value, GetParam(), "");
        EXPECT_EQ(unsigned_text(static_cast<uint32_t>(value), GetParam()), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Each, NoBase,
                         testing::Values(1, 0, -1, -2, -10, INT_MIN, INT_MIN + 1, INT_MIN + 2,
                                         INT_MIN + 10, 37, 38, 256 + 10, 65536 + 10, INT_MAX));

TEST(NumberText, writes_a_sign_and_the_magnitude_whatever_the_base)
{
    EXPECT_EQ(signed_text(-255, 16), "-ff");
    EXPECT_EQ(signed_text(-1, 2), "-1");
    EXPECT_EQ(signed_text(-1, 16), "-1");
    EXPECT_EQ(signed_text(-35, 36), "-z");
    EXPECT_EQ(signed_text(INT_MIN, 10), "-2147483648");
}

TEST(NumberText, in_decimal_changes_its_length_at_each_power_of_ten)
{
    uint32_t power = 10;
    for (size_t zeros = 1; zeros <= 9; ++zeros, power *= 10) {
        const std::string nines(zeros, '9');
        const std::string one_and_zeros = "1" + std::string(zeros, '0');
        EXPECT_EQ(unsigned_text(power - 1, 10), nines);
        EXPECT_EQ(unsigned_text(power, 10), one_and_zeros);
        expect_signed(static_cast<int32_t>(power) - 1, 10, nines);
        expect_signed(static_cast<int32_t>(power), 10, one_and_zeros);
        expect_signed(1 - static_cast<int32_t>(power), 10, "-" + nines);
        expect_signed(-static_cast<int32_t>(power), 10, "-" + one_and_zeros);
    }
}

TEST(NumberText, in_decimal_agrees_with_the_c_library_for_every_small_number)
{
    for (int32_t number = 0; number < 20'000 && !testing::Test::HasFailure(); ++number) {
        expect_signed(number, 10, std::to_string(number));
    }
}

TEST(NumberText, has_no_sign_for_unsigned_numbers)
{
    EXPECT_EQ(unsigned_text(4294967295U, 16), "ffffffff");
    EXPECT_EQ(unsigned_text(4294967295U, 2), std::string(32, '1'));
    EXPECT_EQ(unsigned_text(0x80000000U, 10), "2147483648");
}

TEST(NumberText, longest_of_all_fills_34_bytes)
{
    char buffer[LONGEST + 1] = {};
    std::fill_n(buffer, sizeof(buffer), UNWRITTEN);
    stm_itoa(INT_MIN, buffer, 2);
    EXPECT_EQ(std::string(buffer), "-1" + std::string(31, '0'));
    EXPECT_EQ(buffer[33], '\0');
    EXPECT_EQ(buffer[34], UNWRITTEN);
}

TEST(NumberText, of_a_longer_long_has_its_low_32_bits_as_a_signed_number)
{
    EXPECT_EQ(long_text(0x1'0000'0000, 10), "0");
    EXPECT_EQ(long_text(0x7'0000'0005, 10), "5");
    EXPECT_EQ(long_text(0x8000'0000, 10), "-2147483648");
    EXPECT_EQ(long_text(0xFFFF'FFFF, 10), "-1");
    EXPECT_EQ(long_text(-0x1'0000'0000 + 7, 10), "7");
    EXPECT_EQ(long_text(-0x8000'0001LL, 16), "7fffffff");
    EXPECT_EQ(long_text(LLONG_MAX, 10), "-1");
    EXPECT_EQ(long_text(LLONG_MIN, 10), "0");
}
