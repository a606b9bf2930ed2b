// The co-processor's own checksum.
#include "simulator/wire/crc.hpp"

#include <gtest/gtest.h>

#include <array>

namespace simulator
{

namespace
{

TEST(BitwiseCrc, has_the_check_value_of_its_algorithm)
{
    constexpr std::array<uint8_t, 9> DIGITS = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(bitwise_crc(DIGITS), 0xD64E);
}

TEST(BitwiseCrc, of_nothing_is_zero)
{
    EXPECT_EQ(bitwise_crc({}), 0x0000);
}

TEST(BitwiseCrc, of_a_zero_byte_is_the_divided_start_value_inverted)
{
    constexpr std::array<uint8_t, 1> ZERO = {0};
    EXPECT_EQ(bitwise_crc(ZERO), 0x1E0F);
}

TEST(BitwiseCrc, changes_with_every_single_bit)
{
    std::array<uint8_t, 1032> frame = {};
    const uint16_t whole = bitwise_crc(frame);
    for (size_t bit = 0; bit < frame.size() * 8; bit += 7) {
        frame[bit / 8] = static_cast<uint8_t>(1U << (bit % 8));
        EXPECT_NE(bitwise_crc(frame), whole) << "bit " << bit;
        frame[bit / 8] = 0;
    }
}

} // namespace

} // namespace simulator
