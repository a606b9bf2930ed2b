// Goal: bytes that are not cleared on purpose are sent as they were left, in the mode command and
// in the tail of the frames, and the checksum covers them.
#include "link/stm_com_funcs.h"
#include "tests/download/download_fixture.hpp"

#include <cstring>

namespace
{

class StaleBytes : public Download
{
  protected:
    StaleBytes()
    {
        watch = [this](const spi_ioc_transfer &descriptor) {
            sent.emplace_back(stm_link.tx_buffer, stm_link.tx_buffer + descriptor.len);
        };
    }

    // Bytes 0, 1, 2 ... 255, 0, 1 ... throughout the transmit buffer.
    static void count_in_tx_buffer()
    {
        for (size_t i = 0; i < sizeof(stm_link.tx_buffer); ++i) {
            stm_link.tx_buffer[i] = static_cast<uint8_t>(i);
        }
    }

    std::vector<Bytes> sent;
};

const Bytes OPENED(10, 0x66);
const Bytes COUNTED = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09};

constexpr size_t HEADER = 2;
constexpr size_t BLOCK_0 = 4;
constexpr size_t BLOCK_1 = 6;
constexpr size_t BLOCK_2 = 8;

Bytes tail_of(const Bytes &sent_frame)
{
    return part_of(sent_frame, 1024, 1034);
}

} // namespace

TEST_F(StaleBytes, header_after_opening_has_0x66_in_its_last_ten_bytes)
{
    load(Bytes{}, FIRMWARE);
    ASSERT_GT(sent.size(), HEADER);
    EXPECT_EQ(tail_of(sent[HEADER]), OPENED);
    EXPECT_EQ(sent[HEADER], frame(0x08004000, 0, {}, OPENED));
}

TEST_F(StaleBytes, header_after_other_use_of_the_buffer_repeats_what_stood_there)
{
    count_in_tx_buffer();
    load(Bytes{}, FIRMWARE);
    ASSERT_GT(sent.size(), HEADER);
    EXPECT_EQ(sent[HEADER], frame(0x08004000, 0, {}, COUNTED));
}

TEST_F(StaleBytes, single_byte_commands_do_not_reach_the_tail)
{
    EXPECT_EQ(stm_start_bootloader(), 0);
    EXPECT_EQ(stm_print_booter_version(poll, output), 0);
    sent.clear();
    load(Bytes{}, FIRMWARE);
    ASSERT_GT(sent.size(), HEADER);
    EXPECT_EQ(tail_of(sent[HEADER]), OPENED);
}

TEST_F(StaleBytes, short_first_block_keeps_0x66_behind_its_data)
{
    const Bytes image = image_of(1014);
    load(image, FIRMWARE);
    ASSERT_GT(sent.size(), BLOCK_0);
    EXPECT_EQ(part_of(sent[BLOCK_0], 10, 1024), image);
    EXPECT_EQ(tail_of(sent[BLOCK_0]), OPENED);
}

TEST_F(StaleBytes, block_that_reaches_one_byte_into_the_tail_replaces_that_byte_alone)
{
    const Bytes image = image_of(1015);
    load(image, FIRMWARE);
    ASSERT_GT(sent.size(), BLOCK_0);
    EXPECT_EQ(tail_of(sent[BLOCK_0]), chained({part_of(image, 1014, 1015), bytes_of(9, 0x66)}));
}

TEST_F(StaleBytes, short_last_block_repeats_the_tail_of_the_block_before)
{
    const Bytes image = image_of(2049);
    load(image, FIRMWARE);
    ASSERT_GT(sent.size(), BLOCK_2);
    EXPECT_EQ(sent[BLOCK_2],
              frame(0x08004000, 1, part_of(image, 2048, 2049), part_of(image, 2038, 2048)));
}

TEST_F(StaleBytes, last_block_that_ends_within_the_tail_mixes_both)
{
    const Bytes image = image_of(1024 + 1020);
    load(image, FIRMWARE);
    ASSERT_GT(sent.size(), BLOCK_1);
    EXPECT_EQ(tail_of(sent[BLOCK_1]),
              chained({part_of(image, 2038, 2044), part_of(image, 1020, 1024)}));
}

TEST_F(StaleBytes, header_of_a_second_download_repeats_the_tail_of_the_first)
{
    const Bytes image = image_of(1024);
    load(image, FIRMWARE);
    sent.clear();
    load(Bytes{}, FIRMWARE);
    ASSERT_GT(sent.size(), HEADER);
    EXPECT_EQ(sent[HEADER], frame(0x08004000, 0, {}, part_of(image, 1014, 1024)));
}

TEST_F(StaleBytes, boot_loader_command_after_opening_carries_0x66)
{
    load(Bytes{}, BOOTER);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0], Bytes({0x82, 0x66, 0x66, 0x66, 0x66, 0x66, 0x66, 0xAA}));
}

TEST_F(StaleBytes, boot_loader_command_after_a_query_carries_zeros)
{
    uint8_t answer = 0;
    EXPECT_EQ(stm_query_byte(0x23, &answer), 0);
    sent.clear();
    load(Bytes{}, BOOTER);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0], Bytes({0x82, 0, 0, 0, 0, 0, 0, 0xAA}));
}

TEST_F(StaleBytes, boot_loader_command_carries_whatever_stands_there)
{
    count_in_tx_buffer();
    load(Bytes{}, BOOTER);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0], Bytes({0x82, 1, 2, 3, 4, 5, 6, 0xAA}));
}

// The frame stays in the buffer; checksum 0x06FD, address 0x08004000, size 1.
TEST_F(StaleBytes, boot_loader_command_after_a_download_that_met_the_end_of_its_file)
{
    load(Bytes{0x1E}, FIRMWARE);
    sent.clear();
    load(Bytes{}, BOOTER);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0], Bytes({0x82, 0x06, 0x00, 0x40, 0x00, 0x08, 0x01, 0xAA}));
}

// The empty read after a last full block has already cleared the next frame.
TEST_F(StaleBytes, boot_loader_command_after_a_download_of_full_blocks)
{
    load(image_of(1024), FIRMWARE);
    sent.clear();
    load(Bytes{}, BOOTER);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0], Bytes({0x82, 0, 0, 0, 0, 0, 0, 0xAA}));
}

TEST_F(StaleBytes, firmware_command_changes_its_own_byte_alone)
{
    count_in_tx_buffer();
    fail_exchange(1, 5);
    load(Bytes{}, FIRMWARE);
    EXPECT_EQ(Bytes(stm_link.tx_buffer, stm_link.tx_buffer + 9),
              Bytes({0x81, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(StaleBytes, another_address_leaves_the_buffer_as_it_is)
{
    count_in_tx_buffer();
    fail_exchange(1, 5);
    load(Bytes{}, 0x20000000);
    EXPECT_EQ(Bytes(stm_link.tx_buffer, stm_link.tx_buffer + 9),
              Bytes({0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(StaleBytes, end_of_file_flag_ends_before_the_next_frame_is_cleared)
{
    load(Bytes{0x1E}, FIRMWARE);
    Bytes left = frame(0x08004000, 1, {0x1E}, OPENED);
    left[0] = 0x33; // the last poll
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({left, bytes_of(3062, 0x66)}));
}

TEST_F(StaleBytes, empty_read_ends_behind_a_cleared_frame)
{
    const Bytes image = image_of(2048);
    load(image, FIRMWARE);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer),
              chained({bytes_of(1024, 0x00), part_of(image, 2038, 2048), bytes_of(3062, 0x66)}));
}
