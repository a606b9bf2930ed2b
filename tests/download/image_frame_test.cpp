// Goal: one frame is cleared, completed and sent as its layout says, to the byte.
#include "download/image_frame.hpp"

#include "tests/download/download_fixture.hpp"
#include "tests/platform/bitwise_crc.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

class ImageFrame : public Download
{
};

} // namespace

TEST_F(ImageFrame, begins_with_1024_zeros_before_an_uncleared_tail)
{
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    image_frame_begin();
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({bytes_of(1024, 0), bytes_of(3072, 0x5A)}));
}

TEST_F(ImageFrame, data_begin_at_byte_10)
{
    EXPECT_EQ(image_frame_begin(), stm_link.tx_buffer + 10);
}

TEST_F(ImageFrame, ends_with_checksum_address_and_size_low_byte_first)
{
    image_frame_begin();
    image_frame_finish(0x12345678, 0x9ABCDEF0);
    EXPECT_EQ(part_of(bytes_in(stm_link.tx_buffer), 2, 11),
              Bytes({0x78, 0x56, 0x34, 0x12, 0xF0, 0xDE, 0xBC, 0x9A, 0x00}));
}

TEST_F(ImageFrame, checksum_covers_bytes_2_to_1033_and_travels_low_byte_first)
{
    for (size_t i = 0; i < sizeof(stm_link.tx_buffer); ++i) {
        stm_link.tx_buffer[i] = static_cast<uint8_t>(i * 7);
    }
    const uint16_t checksum = image_frame_finish(0x08004000, 1024);
    const Bytes buffer = bytes_in(stm_link.tx_buffer);
    EXPECT_EQ(checksum, bitwise_crc(part_of(buffer, 2, 1034)));
    EXPECT_EQ(buffer[0], checksum & 0xFF);
    EXPECT_EQ(buffer[1], checksum >> 8);
}

TEST_F(ImageFrame, its_last_byte_counts_and_the_one_behind_it_does_not)
{
    const uint16_t checksum = image_frame_finish(0x08004000, 1024);
    stm_link.tx_buffer[1034] ^= 0xFF;
    EXPECT_EQ(image_frame_finish(0x08004000, 1024), checksum);
    stm_link.tx_buffer[1033] ^= 0xFF;
    EXPECT_NE(image_frame_finish(0x08004000, 1024), checksum);
}

TEST_F(ImageFrame, completing_touches_ten_bytes)
{
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    image_frame_finish(0x08004000, 1);
    EXPECT_EQ(part_of(bytes_in(stm_link.tx_buffer), 10, 4096), bytes_of(4086, 0x5A));
}

TEST_F(ImageFrame, is_sent_with_all_its_1034_bytes)
{
    link_prepare_transfer(stm_link.transfer);
    image_frame_begin();
    EXPECT_EQ(image_frame_send(), 1034);
    EXPECT_TRUE(happened({"exchange 1034: 00*1024 66*10"}));
}

TEST_F(ImageFrame, failing_exchange_is_negative)
{
    link_prepare_transfer(stm_link.transfer);
    fail_exchange(1, EIO);
    EXPECT_LT(image_frame_send(), 0);
}
