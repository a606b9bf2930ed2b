// Goal: numbers are laid out low byte first, or read high byte first where the wire has it so, at
// any address, and nothing beside them is touched.
#include "link/bytes.hpp"
#include "tests/platform/transcript.hpp"

#include <array>

using namespace stm;

namespace
{

constexpr std::array<uint8_t, 4> at_compile_time()
{
    std::array<uint8_t, 4> bytes = {};
    put_le32(bytes.data(), 0x08004000);
    return bytes;
}

static_assert(low_byte(0x1234) == 0x34 && high_byte(0x1234) == 0x12);
static_assert(at_compile_time() == std::array<uint8_t, 4>{0x00, 0x40, 0x00, 0x08});

Bytes le16(uint16_t value)
{
    Bytes bytes(4, 0xEE);
    put_le16(bytes.data() + 1, value);
    return bytes;
}

Bytes le32(uint32_t value)
{
    Bytes bytes(6, 0xEE);
    put_le32(bytes.data() + 1, value);
    return bytes;
}

} // namespace

TEST(LittleEndian, sixteen_bits_travel_low_byte_first)
{
    EXPECT_EQ(le16(0x1234), Bytes({0xEE, 0x34, 0x12, 0xEE}));
    EXPECT_EQ(le16(0x0000), Bytes({0xEE, 0x00, 0x00, 0xEE}));
    EXPECT_EQ(le16(0x00FF), Bytes({0xEE, 0xFF, 0x00, 0xEE}));
    EXPECT_EQ(le16(0xFF00), Bytes({0xEE, 0x00, 0xFF, 0xEE}));
}

TEST(LittleEndian, thirty_two_bits_travel_low_byte_first)
{
    EXPECT_EQ(le32(0x12345678), Bytes({0xEE, 0x78, 0x56, 0x34, 0x12, 0xEE}));
    EXPECT_EQ(le32(0x00000000), Bytes({0xEE, 0x00, 0x00, 0x00, 0x00, 0xEE}));
    EXPECT_EQ(le32(0xFFFFFFFE), Bytes({0xEE, 0xFE, 0xFF, 0xFF, 0xFF, 0xEE}));
}

TEST(LittleEndian, sixteen_bits_are_read_low_byte_first)
{
    const uint8_t bytes[] = {0xEE, 0x34, 0x12, 0xFF, 0x00, 0x80, 0xFF, 0xFF};
    EXPECT_EQ(get_le16(bytes + 1), 0x1234);
    EXPECT_EQ(get_le16(bytes + 2), 0xFF12);
    EXPECT_EQ(get_le16(bytes + 3), 0x00FF);
    EXPECT_EQ(get_le16(bytes + 4), 0x8000);
    EXPECT_EQ(get_le16(bytes + 6), 0xFFFF);
}

TEST(LittleEndian, sixteen_bits_are_read_as_they_were_written)
{
    for (uint32_t value = 0; value <= 0xFFFF; ++value) {
        ASSERT_EQ(get_le16(le16(static_cast<uint16_t>(value)).data() + 1), value);
    }
}

TEST(LittleEndian, thirty_two_bits_are_read_low_byte_first)
{
    const uint8_t bytes[] = {0xEE, 0x78, 0x56, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0xFF, 0x80, 0x00};
    EXPECT_EQ(get_le32(bytes + 1), 0x12345678U);
    EXPECT_EQ(get_le32(bytes + 2), 0xFF123456U);
    EXPECT_EQ(get_le32(bytes + 5), 0xFFFFFFFFU);
    EXPECT_EQ(get_le32(bytes + 6), 0x80FFFFFFU);
    EXPECT_EQ(get_le32(bytes + 7), 0x0080FFFFU);
}

TEST(LittleEndian, each_of_thirty_two_bits_is_read_as_it_was_written)
{
    for (int bit = 0; bit < 32; ++bit) {
        const uint32_t value = uint32_t{1} << bit;
        EXPECT_EQ(get_le32(le32(value).data() + 1), value);
        EXPECT_EQ(get_le32(le32(~value).data() + 1), ~value);
    }
}

TEST(BigEndian, sixteen_bits_are_read_high_byte_first)
{
    const uint8_t bytes[] = {0xEE, 0x12, 0x34, 0xFF, 0x00, 0x80, 0xFF, 0xFF};
    EXPECT_EQ(get_be16(bytes + 1), 0x1234);
    EXPECT_EQ(get_be16(bytes + 2), 0x34FF);
    EXPECT_EQ(get_be16(bytes + 3), 0xFF00);
    EXPECT_EQ(get_be16(bytes + 4), 0x0080);
    EXPECT_EQ(get_be16(bytes + 6), 0xFFFF);
}

TEST(BigEndian, sixteen_bits_are_those_of_the_other_order_with_their_bytes_swapped)
{
    for (uint32_t value = 0; value <= 0xFFFF; ++value) {
        const auto swapped = static_cast<uint16_t>(value << 8 | value >> 8);
        ASSERT_EQ(get_be16(le16(static_cast<uint16_t>(value)).data() + 1), swapped);
    }
}

TEST(BytesOfAWord, are_its_lowest_and_the_one_above_whatever_lies_higher)
{
    EXPECT_EQ(low_byte(0x1234), 0x34);
    EXPECT_EQ(high_byte(0x1234), 0x12);
    EXPECT_EQ(low_byte(0xFF00), 0x00);
    EXPECT_EQ(high_byte(0x00FF), 0x00);
    EXPECT_EQ(low_byte(0xFFFF), 0xFF);
    EXPECT_EQ(high_byte(0xFFFF), 0xFF);
    EXPECT_EQ(low_byte(0xABCD1234), 0x34);
    EXPECT_EQ(high_byte(0xABCD1234), 0x12);
}
