// Goal: a slot of the ring is known by its checksum, and shown as the module shows its records.
#include "stmctl/record/ring_slot.hpp"

#include "stmctl/record/record_csv.hpp"
#include "stmctl/record/record_text.hpp"
#include "tests/stmctl/numbered_record.hpp"
#include "tests/stmctl/record/record_examples.hpp"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <numeric>

using namespace stmctl;

namespace
{

constexpr RingRecord SLOT = {0x55, 7,  2350, 1234, 100, 200, 300, -600, 10,
                             20,   30, -60,  1,    2,   -3,  17,  513};

std::string text(const RingRecord &slot)
{
    TextBuffer buffer;
    put_text(record_of_slot(slot), buffer);
    return std::string(buffer.text());
}

std::string csv(const RingRecord &slot)
{
    TextBuffer buffer;
    put_csv(record_of_slot(slot), buffer);
    return std::string(buffer.text());
}

TEST(RingSlot, is_shown_as_the_module_shows_it)
{
    EXPECT_EQ(text(SLOT), TEMP_TEXT);
    EXPECT_EQ(csv(SLOT), TEMP_LINE);
}

TEST(RingSlot, has_a_time_without_a_sign_in_csv_alone)
{
    RingRecord slot = SLOT;
    slot.rel_t = -1;
    EXPECT_EQ(csv(slot).substr(0, 18), "7;2350;4294967295;");
    EXPECT_NE(text(slot).find("rel_t: -1\n"), std::string::npos);
    EXPECT_EQ(record_of_slot(slot).rel_t(), 0xFFFFFFFFU);
}

TEST(RingSlot, keeps_the_least_and_the_greatest_numbers)
{
    constexpr int32_t LEAST = std::numeric_limits<int32_t>::min();
    constexpr int32_t GREATEST = std::numeric_limits<int32_t>::max();
    const RingRecord slot = {255,      255,   65535, LEAST,    GREATEST, LEAST,
                             GREATEST, LEAST, LEAST, GREATEST, LEAST,    GREATEST,
                             -32768,   32767, -128,  255,      65535};
    EXPECT_EQ(csv(slot), "255;65535;2147483648;2147483647;-2147483648;2147483647;-2147483648;"
                         "-2147483648;2147483647;-2147483648;2147483647;-32768;32767;-128;255;"
                         "65535;\n");
}

TEST(RingSlot, is_whole_with_its_own_checksum_alone)
{
    const RingRecord whole = numbered(4711, -99);
    EXPECT_TRUE(is_whole(whole));
    for (size_t byte = 0; byte < sizeof(whole); ++byte) {
        RingRecord damaged = whole;
        reinterpret_cast<uint8_t *>(&damaged)[byte] ^= 0x10;
        EXPECT_FALSE(is_whole(damaged)) << byte;
    }
    EXPECT_FALSE(is_whole({}));
}

// Byte 0 is 0x00 on the wire, byte 1 is 0x01 and so on: no two fields are alike.
TEST(RingSlot, has_its_checksum_over_the_order_of_the_protocol)
{
    uint8_t wire[46];
    std::iota(std::begin(wire), std::end(wire), uint8_t{0});
    RingRecord slot = {};
    slot.nr = 0x01;
    slot.temp = 0x0302;
    slot.rel_t = 0x07060504;
    slot.Uen = 0x0B0A0908;
    slot.U1e = 0x0F0E0D0C;
    slot.U2e = 0x13121110;
    slot.U3e = 0x17161514;
    slot.negIe = 0x1B1A1918;
    slot.I1 = 0x1F1E1D1C;
    slot.I2 = 0x23222120;
    slot.I3 = 0x27262524;
    slot.BE1 = 0x2928;
    slot.BE2 = 0x2B2A;
    slot.BE = 0x2C;
    slot.buffered = 0x2D;
    slot.checksum = stm_crc16(wire, sizeof(wire));
    EXPECT_TRUE(is_whole(slot));
}

TEST(RingSlot, is_empty_until_anything_is_in_it)
{
    EXPECT_TRUE(is_empty({}));
    RingRecord slot = {};
    slot.checksum = 1;
    EXPECT_FALSE(is_empty(slot));
}

} // namespace
