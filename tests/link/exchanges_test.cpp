// Goal: the exchanges of which the conversation with the application consists send their bytes,
// fill what they fill, and leave all else and every report to their caller.
#include "link/link.hpp"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <climits>
#include <cstring>

using namespace stm;

namespace
{

class Exchanges : public Dialogue
{
  protected:
    Exchanges()
    {
        open_link();
        memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
        memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
    }
};

class FetchedLength : public Exchanges, public testing::WithParamInterface<int32_t>
{
};

class RefusedLength : public Exchanges, public testing::WithParamInterface<int32_t>
{
};

} // namespace

TEST_F(Exchanges, poll_sends_a_D_and_fetches_one_byte)
{
    answer(1, {0x55, 0x56});
    EXPECT_EQ(link_poll_data(1), 1);
    EXPECT_TRUE(happened({"exchange 1: 44"}));
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({{0x44}, bytes_of(4095, 0x5A)}));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({{0x55}, bytes_of(4095, 0xA5)}));
}

TEST_F(Exchanges, pair_is_fetched_with_two_zeros)
{
    answer(1, {0x12, 0x34, 0x56});
    EXPECT_EQ(link_fetch_pair(), 2);
    EXPECT_TRUE(happened({"exchange 2: 00 00"}));
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({{0x00, 0x00}, bytes_of(4094, 0x5A)}));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({{0x12, 0x34}, bytes_of(4094, 0xA5)}));
}

TEST_P(FetchedLength, goes_out_as_filler_of_which_the_whole_buffer_is_full)
{
    const auto length = static_cast<size_t>(GetParam());
    answer(1, bytes_of(4096, 0xC3));
    EXPECT_EQ(link_fetch(GetParam()), GetParam());
    EXPECT_TRUE(happened({exchange(bytes_of(length, 0x66))}));
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer),
              chained({bytes_of(length, 0xC3), bytes_of(4096 - length, 0xA5)}));
}

INSTANTIATE_TEST_SUITE_P(Each, FetchedLength, testing::Values(0, 1, 2, 50, 1203, 4095, 4096));

TEST_P(RefusedLength, is_not_sent)
{
    errno = 0;
    EXPECT_EQ(link_fetch(GetParam()), -1);
    EXPECT_EQ(errno, EMSGSIZE);
    EXPECT_TRUE(happened({}));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0xA5));
}

INSTANTIATE_TEST_SUITE_P(Each, RefusedLength, testing::Values(4097, 65535, INT_MAX, -1, INT_MIN));

TEST_F(Exchanges, failures_are_left_to_the_caller_to_report)
{
    for (const int number : {1, 2, 3}) {
        fail_exchange(number, ESHUTDOWN);
    }
    errno = 0;
    EXPECT_EQ(link_poll_data(1), -1);
    EXPECT_EQ(errno, ESHUTDOWN);
    errno = 0;
    EXPECT_EQ(link_fetch_pair(), -1);
    EXPECT_EQ(errno, ESHUTDOWN);
    errno = 0;
    EXPECT_EQ(link_fetch(3), -1);
    EXPECT_EQ(errno, ESHUTDOWN);
    EXPECT_TRUE(happened({"exchange 1: 44", "exchange 2: 00 00", "exchange 3: 66 66 66"}));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0xA5));
}

TEST_F(Exchanges, result_is_that_of_the_driver)
{
    exchange_result = 0;
    EXPECT_EQ(link_poll_data(1), 0);
    EXPECT_EQ(link_fetch_pair(), 0);
    EXPECT_EQ(link_fetch(3), 0);
}

TEST_F(Exchanges, descriptor_and_short_buffers_and_message_are_left_alone)
{
    memset(static_cast<void *>(&stm_link.transfer), 0xEE, sizeof(stm_link.transfer));
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    memset(stm_link.rx_short, 0x22, sizeof(stm_link.rx_short));
    strcpy(stm_link.message, "the last report");
    const spi_ioc_transfer shared = stm_link.transfer;
    link_clear_buffers();
    link_poll_data(1);
    link_fetch_pair();
    link_fetch(4096);
    EXPECT_EQ(memcmp(&stm_link.transfer, &shared, sizeof(shared)), 0);
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
    EXPECT_EQ(bytes_in(stm_link.rx_short), bytes_of(10, 0x22));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(Exchanges, clearing_zeroes_both_buffers_throughout_and_sends_nothing)
{
    link_clear_buffers();
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x00));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x00));
    EXPECT_TRUE(happened({}));
}
