// Goal: the table-driven checksum is the defined one, for every length its argument can have, and
// the one that the virtual co-processor computes.
#include "link/stm_com_funcs.h"
#include "simulator/wire/crc.hpp"
#include "tests/platform/bitwise_crc.hpp"

namespace
{

uint16_t crc16(const Bytes &bytes)
{
    return stm_crc16(bytes.data(), static_cast<uint16_t>(bytes.size()));
}

// Bytes without a visible pattern, the same in every run.
Bytes scattered_bytes(size_t count, uint32_t seed = 1)
{
    Bytes bytes(count);
    uint32_t state = seed;
    for (uint8_t &byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

// Lengths up to the longest, short ones as likely as long ones.
size_t scattered_length(uint32_t seed)
{
    const Bytes bytes = scattered_bytes(3, seed);
    return static_cast<size_t>(bytes[0] << 8 | bytes[1]) >> (bytes[2] % 16);
}

// The bitwise forms of the tests and of the co-processor both give the module's checksum.
testing::AssertionResult all_agree(const Bytes &bytes)
{
    const uint16_t crc = crc16(bytes);
    if (crc == bitwise_crc(bytes) && crc == simulator::bitwise_crc(bytes)) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << crc << ", not " << bitwise_crc(bytes) << " of the tests and "
           << simulator::bitwise_crc(bytes) << " of the co-processor";
}

} // namespace

TEST(Crc16, check_value_over_the_digits_is_0xD64E)
{
    EXPECT_EQ(crc16({'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0xD64E);
}

TEST(Crc16, no_bytes_give_0_even_without_an_address)
{
    const uint8_t byte = 0x5A;
    EXPECT_EQ(stm_crc16(&byte, 0), 0x0000);
    EXPECT_EQ(stm_crc16(nullptr, 0), 0x0000);
}

TEST(Crc16, every_single_byte_agrees_with_the_bitwise_form)
{
    for (int value = 0; value < 256; ++value) {
        const Bytes byte = {static_cast<uint8_t>(value)};
        EXPECT_EQ(crc16(byte), bitwise_crc(byte)) << "byte " << value;
    }
}

TEST(Crc16, every_second_byte_agrees_with_the_bitwise_form)
{
    for (int value = 0; value < 256; ++value) {
        const Bytes bytes = {0xA5, static_cast<uint8_t>(value)};
        EXPECT_EQ(crc16(bytes), bitwise_crc(bytes)) << "byte " << value;
    }
}

TEST(Crc16, lengths_around_every_frame_agree_with_the_bitwise_form)
{
    for (const size_t length : {2U, 8U, 46U, 54U, 255U, 256U, 257U, 1023U, 1024U, 1032U, 4096U}) {
        const Bytes bytes = scattered_bytes(length);
        EXPECT_EQ(crc16(bytes), bitwise_crc(bytes)) << "length " << length;
    }
}

// Words are folded from lengths on that depend on their size, and with heads of every size.
TEST(Crc16, every_length_to_1200_at_every_alignment_agrees_with_the_bitwise_form)
{
    const Bytes bytes = scattered_bytes(1200 + 16);
    for (size_t begin = 0; begin < 16; ++begin) {
        uint32_t remainder = 0xFFFF;
        for (uint16_t length = 0; length <= 1200; ++length) {
            const auto expected = static_cast<uint16_t>(~remainder);
            ASSERT_EQ(stm_crc16(bytes.data() + begin, length), expected)
                << "length " << length << " from " << begin;
            remainder ^= static_cast<uint32_t>(bytes[begin + length]) << 8;
            for (int bit = 0; bit < 8; ++bit) {
                remainder = (remainder << 1) ^ ((remainder & 0x8000) != 0 ? 0x11021 : 0);
            }
        }
    }
}

TEST(Crc16, every_bit_of_a_record_counts)
{
    Bytes bytes = scattered_bytes(54);
    const uint16_t before = crc16(bytes);
    for (size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
        bytes[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
        EXPECT_NE(crc16(bytes), before) << bit;
        bytes[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
    }
}

TEST(Crc16, longest_lengths_are_covered_to_their_last_byte)
{
    for (const size_t length : {32767U, 32768U, 65534U, 65535U}) {
        Bytes bytes = scattered_bytes(length);
        EXPECT_EQ(crc16(bytes), bitwise_crc(bytes)) << "length " << length;
        const uint16_t before = crc16(bytes);
        bytes.back() ^= 0x01;
        EXPECT_NE(crc16(bytes), before) << "length " << length;
    }
}

TEST(Crc16, order_of_the_bytes_counts)
{
    EXPECT_NE(crc16({0x01, 0x02}), crc16({0x02, 0x01}));
    EXPECT_NE(crc16({0x01}), crc16({0x00, 0x01}));
}

TEST(Crc16, every_single_byte_agrees_with_the_co_processor)
{
    EXPECT_TRUE(all_agree({}));
    for (int value = 0; value < 256; ++value) {
        EXPECT_TRUE(all_agree({static_cast<uint8_t>(value)})) << "byte " << value;
    }
}

TEST(Crc16, scattered_buffers_of_all_lengths_agree_with_the_co_processor)
{
    for (uint32_t seed = 1; seed <= 500; ++seed) {
        const size_t length = scattered_length(seed);
        ASSERT_TRUE(all_agree(scattered_bytes(length, seed)))
            << "seed " << seed << ", length " << length;
    }
}

TEST(Crc16, lengths_at_the_boundaries_agree_with_the_co_processor)
{
    for (const size_t length : {0U, 1U, 255U, 256U, 1032U, 32767U, 32768U, 65534U, 65535U}) {
        EXPECT_TRUE(all_agree(scattered_bytes(length, 7))) << "length " << length;
    }
}
