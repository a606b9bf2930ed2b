// Goal: the link's state has its layout, and opening, synchronising and closing the device make
// exactly their calls, with every failure reported as it always was.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <type_traits>

using namespace stm;

namespace
{

const StmLink link_at_program_start = stm_link;

class LinkState : public Dialogue
{
};

class Opening : public Dialogue
{
};

class Synchronising : public Dialogue
{
};

class Closing : public Dialogue
{
};

} // namespace

TEST_F(LinkState, fields_stand_in_their_declared_order)
{
    EXPECT_EQ(offsetof(StmLink, ring), 0U);
    EXPECT_EQ(offsetof(StmLink, spi_fd), sizeof(void *));
    EXPECT_EQ(offsetof(StmLink, tx_buffer), sizeof(void *) + 4);
    EXPECT_EQ(offsetof(StmLink, message), offsetof(StmLink, tx_buffer) + 4096);
    EXPECT_EQ(offsetof(StmLink, tx_short), offsetof(StmLink, message) + 255);
    EXPECT_GE(offsetof(StmLink, transfer), offsetof(StmLink, tx_short) + 13);
    EXPECT_EQ(offsetof(StmLink, rx_short), offsetof(StmLink, transfer) + 32);
    EXPECT_EQ(offsetof(StmLink, rx_buffer), offsetof(StmLink, rx_short) + 10);
}

TEST_F(LinkState, fields_have_their_sizes)
{
    static_assert(std::is_pointer_v<decltype(StmLink::ring)>);
    static_assert(std::is_same_v<decltype(StmLink::spi_fd), int32_t>);
    static_assert(std::is_same_v<decltype(StmLink::transfer), spi_ioc_transfer>);
    EXPECT_EQ(sizeof(stm_link.tx_buffer), 4096U);
    EXPECT_EQ(sizeof(stm_link.message), 255U);
    EXPECT_EQ(sizeof(stm_link.tx_short), 13U);
    EXPECT_EQ(sizeof(stm_link.transfer), 32U);
    EXPECT_EQ(sizeof(stm_link.rx_short), 10U);
    EXPECT_EQ(sizeof(stm_link.rx_buffer), 4096U);
}

TEST_F(LinkState, all_of_it_is_zero_at_program_start)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(&link_at_program_start);
    EXPECT_EQ(Bytes(bytes, bytes + sizeof(StmLink)), bytes_of(sizeof(StmLink), 0x00));
}

TEST_F(Opening, opens_the_device_sets_its_clock_and_synchronises)
{
    stm_open();
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        "speed 6000000",
        "exchange 4096: 66*4096",
    }));
    EXPECT_EQ(stm_link.spi_fd, 7);
}

TEST_F(Opening, transmit_buffer_holds_0x66_throughout_afterwards)
{
    stm_open();
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
}

TEST_F(Opening, descriptor_0_is_a_device_like_any_other)
{
    open_result = 0;
    EXPECT_FALSE(ends_process(stm_open));
    stm_close();
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        "speed 6000000",
        "exchange 4096: 66*4096",
        "close 0",
    }));
}

TEST_F(Opening, missing_device_is_reported_and_ends_the_process_before_anything_is_sent)
{
    open_error = ENOENT;
    EXPECT_TRUE(ends_process(stm_open));
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        R"(perror "Error: stm_com_func: Can't open device \n" ENOENT)",
        "exit 1",
    }));
}

TEST_F(Opening, descriptor_of_a_failed_open_is_kept_nevertheless)
{
    stm_link.spi_fd = 12;
    open_error = EACCES;
    EXPECT_TRUE(ends_process(stm_open));
    EXPECT_EQ(stm_link.spi_fd, -1);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x00));
}

TEST_F(Opening, missing_device_truly_ends_the_process_with_status_1)
{
    open_error = ENOENT;
    really_exit = true;
    EXPECT_EXIT(stm_open(), testing::ExitedWithCode(1),
                "^Error: stm_com_func: Can't open device \n: No such file or directory\n$");
}

TEST_F(Opening, refused_clock_is_reported_and_the_link_is_synchronised_all_the_same)
{
    speed_result = -1;
    speed_error = EINVAL;
    EXPECT_FALSE(ends_process(stm_open));
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        "speed 6000000",
        R"(perror "Error: writing speed failed\n" EINVAL)",
        "exchange 4096: 66*4096",
    }));
}

TEST_F(Opening, any_result_but_0_is_a_refused_clock)
{
    speed_result = 1;
    speed_error = EIO;
    stm_open();
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        "speed 6000000",
        R"(perror "Error: writing speed failed\n" EIO)",
        "exchange 4096: 66*4096",
    }));
}

TEST_F(Opening, failing_synchronisation_is_reported_and_leaves_the_link_open)
{
    fail_exchange(1, EIO);
    EXPECT_FALSE(ends_process(stm_open));
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        "speed 6000000",
        "exchange 4096: 66*4096",
        R"(perror "Error: stm_com_funcs: SPI datatransfer\n" EIO)",
    }));
    EXPECT_EQ(stm_link.spi_fd, 7);
}

TEST_F(Opening, second_call_opens_again_without_closing)
{
    open_link();
    open_result = 9;
    stm_open();
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        "speed 6000000",
        "exchange 4096: 66*4096",
    }));
    EXPECT_EQ(stm_link.spi_fd, 9);
}

TEST_F(Opening, second_call_that_fails_forgets_the_first_descriptor)
{
    open_link();
    open_error = EBUSY;
    EXPECT_TRUE(ends_process(stm_open));
    EXPECT_TRUE(happened({
        "open \"/dev/spidev1.0\" O_RDWR",
        R"(perror "Error: stm_com_func: Can't open device \n" EBUSY)",
        "exit 1",
    }));
    EXPECT_EQ(stm_link.spi_fd, -1);
    forget();
    stm_close();
    EXPECT_TRUE(happened({}));
}

TEST_F(Synchronising, sends_4096_bytes_of_0x66_whatever_was_sent_before)
{
    open_link();
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    stm_sync_transfer();
    EXPECT_TRUE(happened({"exchange 4096: 66*4096"}));
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
}

TEST_F(Synchronising, receive_buffer_is_cleared_before_the_exchange)
{
    open_link();
    memset(stm_link.rx_buffer, 0x5A, sizeof(stm_link.rx_buffer));
    Bytes before;
    watch = [&before](const spi_ioc_transfer &) { before = bytes_in(stm_link.rx_buffer); };
    stm_sync_transfer();
    EXPECT_EQ(before, bytes_of(4096, 0x00));
}

TEST_F(Synchronising, receive_buffer_holds_what_came_back)
{
    open_link();
    answer(1, bytes_of(4096, 0xC3));
    stm_sync_transfer();
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0xC3));
}

TEST_F(Synchronising, failure_is_reported_and_leaves_the_receive_buffer_clear)
{
    open_link();
    memset(stm_link.rx_buffer, 0x5A, sizeof(stm_link.rx_buffer));
    fail_exchange(1, ESHUTDOWN);
    stm_sync_transfer();
    EXPECT_TRUE(happened({
        "exchange 4096: 66*4096",
        R"(perror "Error: stm_com_funcs: SPI datatransfer\n" ESHUTDOWN)",
    }));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x00));
}

TEST_F(Synchronising, uses_a_descriptor_of_its_own)
{
    open_link();
    memset(static_cast<void *>(&stm_link.transfer), 0xEE, sizeof(stm_link.transfer));
    const spi_ioc_transfer shared = stm_link.transfer;
    stm_sync_transfer();
    EXPECT_EQ(memcmp(&stm_link.transfer, &shared, sizeof(shared)), 0);
}

TEST_F(Synchronising, leaves_the_message_and_the_short_buffers_alone)
{
    open_link();
    strcpy(stm_link.message, "the last report");
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    memset(stm_link.rx_short, 0x22, sizeof(stm_link.rx_short));
    stm_sync_transfer();
    EXPECT_STREQ(stm_link.message, "the last report");
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
    EXPECT_EQ(bytes_in(stm_link.rx_short), bytes_of(10, 0x22));
}

TEST_F(Closing, closes_the_device_and_keeps_its_descriptor)
{
    open_link();
    stm_close();
    EXPECT_TRUE(happened({"close 7"}));
    EXPECT_EQ(stm_link.spi_fd, 7);
}

TEST_F(Closing, second_call_closes_the_same_descriptor_again)
{
    open_link();
    stm_close();
    stm_close();
    EXPECT_TRUE(happened({"close 7", "close 7"}));
}

TEST_F(Closing, negative_descriptor_is_not_closed)
{
    stm_link.spi_fd = -1;
    stm_close();
    EXPECT_TRUE(happened({}));
    EXPECT_EQ(stm_link.spi_fd, -1);
}

TEST_F(Closing, without_an_open_before_it_closes_descriptor_0)
{
    stm_close();
    EXPECT_TRUE(happened({"close 0"}));
}

TEST_F(Closing, failing_close_is_not_reported)
{
    open_link();
    close_result = -1;
    stm_close();
    EXPECT_TRUE(happened({"close 7"}));
}
