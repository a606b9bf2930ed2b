// Goal: the replaced platform answers as the kernel and the C library do, and notices misuse.
#include "tests/platform/dialogue.hpp"

#include <gtest/gtest-spi.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace
{

constexpr char DEVICE_NAME[] = "/dev/spidev1.0";

int exchange_by_hand(spi_ioc_transfer descriptor)
{
    return ioctl(Dialogue::DEVICE, SPI_IOC_MESSAGE(1), &descriptor);
}

spi_ioc_transfer long_exchange(uint32_t length)
{
    spi_ioc_transfer descriptor = {};
    descriptor.tx_buf = reinterpret_cast<uintptr_t>(stm_link.tx_buffer);
    descriptor.rx_buf = reinterpret_cast<uintptr_t>(stm_link.rx_buffer);
    descriptor.len = length;
    return descriptor;
}

void exit_with_3()
{
    exit(3);
}

void do_nothing() {}

} // namespace

TEST_F(Dialogue, records_the_device_calls_in_order)
{
    const uint32_t speed_hz = 125;
    EXPECT_EQ(open(DEVICE_NAME, O_RDWR), 7);
    EXPECT_EQ(ioctl(7, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz), 0);
    EXPECT_EQ(usleep(20), 0);
    stm_link.spi_fd = 7;
    EXPECT_EQ(close(7), 0);
    EXPECT_TRUE(happened({"open \"/dev/spidev1.0\" O_RDWR", "speed 125", "sleep 20", "close 7"}));
    EXPECT_EQ(slept_us, 20U);
}

TEST_F(Dialogue, other_flags_and_other_spi_devices_are_recorded_as_they_are)
{
    open("/dev/spidev1.1", O_RDONLY);
    EXPECT_TRUE(happened({"open \"/dev/spidev1.1\" 0"}));
}

TEST_F(Dialogue, calls_of_others_reach_the_system)
{
    stm_link.spi_fd = -1;
    const int fd = open("/dev/null", O_RDWR);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(close(fd), 0);
    EXPECT_TRUE(happened({}));
}

TEST_F(Dialogue, scripted_errors_set_errno)
{
    open_error = ENOENT;
    speed_result = -1;
    speed_error = EINVAL;
    EXPECT_EQ(open(DEVICE_NAME, O_RDWR), -1);
    EXPECT_EQ(errno, ENOENT);
    const uint32_t speed_hz = 1;
    EXPECT_EQ(ioctl(DEVICE, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz), -1);
    EXPECT_EQ(errno, EINVAL);
}

TEST_F(Dialogue, an_exchange_returns_its_length_and_fills_so_many_bytes)
{
    stm_link.tx_buffer[0] = 0x81;
    stm_link.rx_buffer[2] = 0x99;
    answer(1, {0x12, 0x34, 0x56});
    EXPECT_EQ(exchange_by_hand(long_exchange(2)), 2);
    EXPECT_TRUE(happened({"exchange 2: 81 00"}));
    EXPECT_EQ(stm_link.rx_buffer[0], 0x12);
    EXPECT_EQ(stm_link.rx_buffer[1], 0x34);
    EXPECT_EQ(stm_link.rx_buffer[2], 0x99);
}

TEST_F(Dialogue, a_failing_exchange_brings_nothing_back)
{
    stm_link.rx_buffer[0] = 0x99;
    fail_exchange(1, EIO);
    EXPECT_EQ(exchange_by_hand(long_exchange(1)), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(stm_link.rx_buffer[0], 0x99);
    EXPECT_EQ(exchange_by_hand(long_exchange(1)), 1);
    EXPECT_TRUE(happened({"exchange 1: 00", "exchange 1: 00"}));
}

TEST_F(Dialogue, a_descriptor_with_a_clock_of_its_own_is_noticed)
{
    static spi_ioc_transfer descriptor;
    descriptor = long_exchange(1);
    descriptor.speed_hz = 6000000;
    EXPECT_NONFATAL_FAILURE(exchange_by_hand(descriptor), "not ours");
}

TEST_F(Dialogue, an_exchange_beside_the_buffers_of_the_link_is_noticed)
{
    static spi_ioc_transfer descriptor;
    descriptor = long_exchange(4097);
    EXPECT_NONFATAL_FAILURE(exchange_by_hand(descriptor), "stay within");
    descriptor = long_exchange(1);
    descriptor.rx_buf = descriptor.tx_buf;
    EXPECT_NONFATAL_FAILURE(exchange_by_hand(descriptor), "stay within");
    descriptor = long_exchange(4080);
    descriptor.rx_buf += 17;
    EXPECT_NONFATAL_FAILURE(exchange_by_hand(descriptor), "stay within");
}

TEST_F(Dialogue, what_comes_back_may_lie_behind_bytes_that_are_there_already)
{
    spi_ioc_transfer descriptor = long_exchange(4079);
    descriptor.rx_buf += 17;
    stm_link.rx_buffer[16] = 0x99;
    answer(1, {0x12});
    EXPECT_EQ(exchange_by_hand(descriptor), 4079);
    EXPECT_EQ(stm_link.rx_buffer[16], 0x99);
    EXPECT_EQ(stm_link.rx_buffer[17], 0x12);
    EXPECT_TRUE(happened({"exchange 4079: 00*4079"}));
}

TEST_F(Dialogue, another_descriptor_number_is_noticed)
{
    static const uint32_t speed_hz = 1;
    EXPECT_NONFATAL_FAILURE(ioctl(8, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz), "another descriptor");
}

TEST_F(Dialogue, perror_is_recorded_with_the_name_of_the_error)
{
    errno = EMSGSIZE;
    perror("read data");
    EXPECT_TRUE(happened({"perror \"read data\" EMSGSIZE"}));
}

TEST_F(Dialogue, an_exit_ends_the_operation_instead_of_the_process)
{
    EXPECT_TRUE(ends_process(exit_with_3));
    EXPECT_FALSE(ends_process(do_nothing));
    EXPECT_TRUE(happened({"exit 3"}));
}

TEST_F(Dialogue, polls_deliver_the_lines_of_the_script)
{
    type_line(2, "s\n");
    type_line(3, "x", 0);
    char line[50] = "before";
    EXPECT_EQ(poll(line), 0);
    EXPECT_STREQ(line, "before");
    EXPECT_EQ(poll(line), 1);
    EXPECT_STREQ(line, "s\n");
    EXPECT_EQ(poll(line), 0);
    EXPECT_STREQ(line, "x");
    EXPECT_TRUE(happened({"poll", "poll", "poll"}));
}

TEST_F(Dialogue, outputs_are_recorded_and_answered)
{
    output_result = 12;
    EXPECT_EQ(output("2\n", 0), 12);
    EXPECT_TRUE(happened({"say 0 \"2\\n\""}));
    EXPECT_EQ(texts, Transcript({"say 0 \"2\\n\""}));
    EXPECT_EQ(messages, Transcript({"say 0 \"\""}));
}

TEST_F(Dialogue, an_opened_link_begins_with_an_empty_transcript)
{
    answer(1, {0x55});
    open_link();
    EXPECT_TRUE(happened({}));
    EXPECT_EQ(exchange_by_hand(long_exchange(1)), 1);
    EXPECT_EQ(stm_link.rx_buffer[0], 0x55);
    EXPECT_TRUE(happened({"exchange 1: 66"}));
}
