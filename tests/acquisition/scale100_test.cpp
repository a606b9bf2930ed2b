// Goal: a number becomes hundredths in single precision, cut off and kept within 32 bits, down to
// the last bit of what settings have always sent.
#include "link/stm_com_funcs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

using Float = std::numeric_limits<float>;

} // namespace

TEST(Scale100, numbers_become_hundredths)
{
    EXPECT_EQ(stm_scale100(1.0F), 100U);
    EXPECT_EQ(stm_scale100(0.5F), 50U);
    EXPECT_EQ(stm_scale100(655.35F), 65534U); // the nearest number lies below
    EXPECT_EQ(stm_scale100(655.36F), 65536U);
    EXPECT_EQ(stm_scale100(700.0F), 70000U);
}

TEST(Scale100, fractions_of_a_hundredth_are_cut_off_not_rounded)
{
    EXPECT_EQ(stm_scale100(12.345F), 1234U);
    EXPECT_EQ(stm_scale100(1.999F), 199U);
    EXPECT_EQ(stm_scale100(0.009F), 0U);
    EXPECT_EQ(stm_scale100(0.53F), 52U);
    EXPECT_EQ(stm_scale100(2.11F), 210U);
}

// In double precision each of these would be one less.
TEST(Scale100, the_product_is_rounded_to_single_precision_before_it_is_cut)
{
    EXPECT_EQ(stm_scale100(0.01F), 1U);
    EXPECT_EQ(stm_scale100(0.02F), 2U);
    EXPECT_EQ(stm_scale100(0.29F), 29U);
    EXPECT_EQ(stm_scale100(200.01F), 20001U);
    EXPECT_EQ(stm_scale100(200.12F), 20012U);
    EXPECT_EQ(stm_scale100(0x1.47ae16p+17F), 16777218U); // 167772.17
}

// Double precision would give 100000006, 100000018, 1234567800 and 1234567900.
TEST(Scale100, beyond_24_bits_the_product_is_one_of_single_precision_too)
{
    EXPECT_EQ(stm_scale100(0x1.e84802p+19F), 100000008U);
    EXPECT_EQ(stm_scale100(0x1.e84806p+19F), 100000016U);
    EXPECT_EQ(stm_scale100(12345678.0F), 1234567808U);
    EXPECT_EQ(stm_scale100(12345679.0F), 1234567936U);
}

TEST(Scale100, the_number_before_one_hundredth_is_none)
{
    EXPECT_EQ(stm_scale100(std::nextafter(0.01F, 0.0F)), 0U);
}

TEST(Scale100, zero_is_zero_with_either_sign)
{
    EXPECT_EQ(stm_scale100(0.0F), 0U);
    EXPECT_EQ(stm_scale100(-0.0F), 0U);
}

TEST(Scale100, smallest_numbers_are_zero_with_either_sign)
{
    EXPECT_EQ(stm_scale100(Float::denorm_min()), 0U);
    EXPECT_EQ(stm_scale100(-Float::denorm_min()), 0U);
    EXPECT_EQ(stm_scale100(Float::min()), 0U);
    EXPECT_EQ(stm_scale100(-Float::min()), 0U);
}

TEST(Scale100, everything_below_zero_is_zero)
{
    EXPECT_EQ(stm_scale100(-0.009F), 0U);
    EXPECT_EQ(stm_scale100(-0.01F), 0U);
    EXPECT_EQ(stm_scale100(-5.0F), 0U);
    EXPECT_EQ(stm_scale100(-42949672.0F), 0U);
    EXPECT_EQ(stm_scale100(-Float::max()), 0U);
    EXPECT_EQ(stm_scale100(-Float::infinity()), 0U);
}

TEST(Scale100, products_from_2_to_the_31_on_keep_their_highest_bit)
{
    EXPECT_EQ(stm_scale100(21474836.0F), 2147483648U);
    EXPECT_EQ(stm_scale100(40000000.0F), 4000000000U);
}

TEST(Scale100, the_last_product_below_2_to_the_32_is_itself)
{
    EXPECT_EQ(stm_scale100(42949668.0F), 4294966784U);
}

TEST(Scale100, product_that_rounds_to_2_to_the_32_is_the_largest_result)
{
    EXPECT_EQ(stm_scale100(42949672.0F), 4294967295U);
}

TEST(Scale100, everything_above_is_the_largest_result_too)
{
    EXPECT_EQ(stm_scale100(42949676.0F), 4294967295U);
    EXPECT_EQ(stm_scale100(85899345.92F), 4294967295U); // 2^33 in hundredths
    EXPECT_EQ(stm_scale100(1e15F), 4294967295U);
    EXPECT_EQ(stm_scale100(1e30F), 4294967295U);
    EXPECT_EQ(stm_scale100(Float::max()), 4294967295U);
    EXPECT_EQ(stm_scale100(Float::infinity()), 4294967295U);
}

TEST(Scale100, what_is_no_number_is_zero)
{
    EXPECT_EQ(stm_scale100(Float::quiet_NaN()), 0U);
    EXPECT_EQ(stm_scale100(-Float::quiet_NaN()), 0U);
}
