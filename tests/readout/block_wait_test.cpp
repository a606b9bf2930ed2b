// Goal: the wait for a block polls without pauses, listens to its operator in each poll, and ends
// in exactly four ways.
#include "readout/block.hpp"

#include "link/link.hpp"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

const Transcript POLL = {"exchange 1: 44", "poll"};

class BlockWait : public Dialogue
{
  protected:
    BlockWait()
    {
        open_link();
        strcpy(stm_link.message, "the last report");
    }

    static Wait wait(const char *failure = "a poll failed")
    {
        int32_t ready_at = 0;
        return block_wait(BLOCK_POLLING, failure, poll, output, ready_at);
    }
};

class OtherLine : public BlockWait, public testing::WithParamInterface<const char *>
{
};

class StopResult : public BlockWait, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_F(BlockWait, readiness_in_the_first_poll_ends_it_without_a_word)
{
    answer_statuses({0x55});
    EXPECT_EQ(wait(), Wait::ready);
    EXPECT_TRUE(happened(POLL));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(BlockWait, no_status_but_0x55_ends_it)
{
    for (int status = 0; status < 256; ++status) {
        forget();
        answer_statuses({static_cast<uint8_t>(status), 0x55});
        EXPECT_EQ(wait(), Wait::ready);
        EXPECT_TRUE(happened(times(status == 0x55 ? 1 : 2, POLL))) << "status " << status;
    }
}

TEST_F(BlockWait, readiness_in_the_299th_and_300th_poll_is_in_time)
{
    for (const int number : {300, 299}) {
        forget();
        answer(number, {0x55});
        EXPECT_EQ(wait(), Wait::ready);
        EXPECT_TRUE(happened(times(number, POLL)));
    }
}

TEST_F(BlockWait, readiness_in_the_301st_poll_is_a_timeout)
{
    answer(301, {0x55});
    EXPECT_EQ(wait(), Wait::timed_out);
    EXPECT_TRUE(happened(joined({times(301, POLL), {R"(say 0 "SPI timeout\n")"}})));
}

TEST_F(BlockWait, timeout_is_told_through_the_message_and_not_slept_over)
{
    answer(302, {0x55});
    EXPECT_EQ(wait(), Wait::timed_out);
    EXPECT_TRUE(happened(joined({times(301, POLL), {R"(say 0 "SPI timeout\n")"}})));
    EXPECT_EQ(messages, Transcript({R"(say 0 "SPI timeout\n")"}));
    EXPECT_STREQ(stm_link.message, "SPI timeout\n");
    EXPECT_EQ(slept_us, 0U);
}

TEST_F(BlockWait, timeout_does_not_depend_on_what_the_output_returns)
{
    output_result = -1;
    EXPECT_EQ(wait(), Wait::timed_out);
}

TEST_F(BlockWait, each_wait_has_all_its_polls)
{
    EXPECT_EQ(wait(), Wait::timed_out);
    forget();
    answer(300, {0x55});
    EXPECT_EQ(wait(), Wait::ready);
    EXPECT_TRUE(happened(times(300, POLL)));
}

TEST_F(BlockWait, failing_poll_is_reported_in_the_words_of_the_read_out)
{
    fail_exchange(1, EIO);
    EXPECT_EQ(wait(), Wait::failed);
    EXPECT_TRUE(happened({"exchange 1: 44", R"(perror "a poll failed" EIO)"}));
    forget();
    fail_exchange(1, ESHUTDOWN);
    EXPECT_EQ(wait("SPI datatransfer (1)"), Wait::failed);
    EXPECT_TRUE(happened({"exchange 1: 44", "perror \"SPI datatransfer (1)\" ESHUTDOWN"}));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(BlockWait, failing_poll_ends_it_before_the_input_is_polled)
{
    type_line(3, "s\n");
    fail_exchange(3, EIO);
    EXPECT_EQ(wait(), Wait::failed);
    EXPECT_TRUE(
        happened(joined({times(2, POLL), {"exchange 1: 44", R"(perror "a poll failed" EIO)"}})));
}

TEST_F(BlockWait, failing_301st_poll_is_no_timeout)
{
    fail_exchange(301, EIO);
    EXPECT_EQ(wait(), Wait::failed);
    EXPECT_TRUE(
        happened(joined({times(300, POLL), {"exchange 1: 44", R"(perror "a poll failed" EIO)"}})));
}

TEST_F(BlockWait, stop_line_counts_before_the_readiness_of_its_poll)
{
    answer_statuses({0x00, 0x55});
    type_line(2, "s\n");
    EXPECT_EQ(wait(), Wait::stopped);
    EXPECT_TRUE(happened(times(2, POLL)));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(BlockWait, stop_line_in_the_301st_poll_is_no_timeout)
{
    type_line(301, "s\n");
    EXPECT_EQ(wait(), Wait::stopped);
    EXPECT_TRUE(happened(times(301, POLL)));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(BlockWait, stop_line_with_result_0_has_not_been_typed)
{
    answer_statuses({0x00, 0x55});
    type_line(1, "s\n", 0);
    EXPECT_EQ(wait(), Wait::ready);
    EXPECT_TRUE(happened(times(2, POLL)));
}

TEST_P(StopResult, which_is_not_0_stops)
{
    type_line(1, "s\n", GetParam());
    EXPECT_EQ(wait(), Wait::stopped);
    EXPECT_TRUE(happened(POLL));
}

INSTANTIATE_TEST_SUITE_P(Each, StopResult, testing::Values(1, 2, 256, -1));

TEST_P(OtherLine, does_not_stop)
{
    answer_statuses({0x00, 0x55});
    type_line(1, GetParam());
    EXPECT_EQ(wait(), Wait::ready);
    EXPECT_TRUE(happened(times(2, POLL)));
}

INSTANTIATE_TEST_SUITE_P(Each, OtherLine,
                         testing::Values("s", "S\n", "s\n\n", "s\nx", "", "\n", " s\n", "ss\n",
                                         "s\r\n", "stop\n"));

TEST_F(BlockWait, only_byte_0_of_both_buffers_changes)
{
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
    answer_statuses({0x00, 0x55});
    EXPECT_EQ(wait(), Wait::ready);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({{0x44}, bytes_of(4095, 0x5A)}));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({{0x55}, bytes_of(4095, 0xA5)}));
}

TEST_F(BlockWait, exchange_that_returns_0_has_not_failed)
{
    exchange_result = 0;
    answer_statuses({0x55});
    EXPECT_EQ(wait(), Wait::ready);
    EXPECT_TRUE(happened(POLL));
}

TEST_F(BlockWait, pause_takes_half_a_second)
{
    block_pause();
    EXPECT_TRUE(happened({"sleep 500000"}));
}
