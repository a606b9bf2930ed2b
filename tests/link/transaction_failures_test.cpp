// Goal: a parameter command that fails, is stopped or waits in vain says so in its own words, at
// every exchange and poll at which that makes a difference.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

// Blank and newline stand before perror's own colon.
constexpr char FRAME_FAILED[] = "perror \"Error stm_com_funcs: SPI command \\n\" EIO";
constexpr char POLL_FAILED[] = "perror \"Error stm_com_funcs: SPI wait for ACK\\n\" EIO";
constexpr char ANSWER_FAILED[] = "perror \"Error stm_com_funcs: SPI datasize \\n\" EIO";
constexpr char TIMEOUT[] = "say 0 \"Error stm_com_funcs: SPI timeout\\n\"";

const Transcript FRAME = {"exchange 8: 21 00*6 AA"};
const Transcript POLL = {"exchange 1: 44", "poll", "sleep 1000"};
const Transcript STOPPED_POLL = {"exchange 1: 44", "poll"};
const Transcript FAILING_POLL = {"exchange 1: 44", POLL_FAILED};
const Transcript ANSWER = {"exchange 2: 00 00"};

class FailingTransaction : public Dialogue
{
  protected:
    FailingTransaction()
    {
        open_link();
        strcpy(stm_link.message, "the last report");
    }

    ~FailingTransaction() override
    {
        EXPECT_EQ(messages, texts) << "every text goes through the message buffer";
    }

    static int32_t send() { return stm_command('!', 0, 0, 0, 0, poll, output); }

    // The poll of this number, counted from 1, is the exchange behind the frame and those before.
    void answer_poll(int number, uint8_t status) { answer(number + 1, {status}); }
    void fail_poll(int number) { fail_exchange(number + 1, EIO); }
};

class OtherLine : public FailingTransaction, public testing::WithParamInterface<const char *>
{
};

class StopResult : public FailingTransaction, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_F(FailingTransaction, at_the_frame_polls_nothing)
{
    fail_exchange(1, EIO);
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(happened(joined({FRAME, {FRAME_FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingTransaction, tells_the_reason_of_the_system)
{
    fail_exchange(1, ESHUTDOWN);
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(
        happened(joined({FRAME, {"perror \"Error stm_com_funcs: SPI command \\n\" ESHUTDOWN"}})));
}

TEST_F(FailingTransaction, at_the_first_poll_ends_before_the_input_is_polled)
{
    fail_poll(1);
    type_line(1, "s\n");
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(happened(joined({FRAME, FAILING_POLL})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingTransaction, at_a_later_poll_ends_it_too)
{
    fail_poll(3);
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(happened(joined({FRAME, times(2, POLL), FAILING_POLL})));
}

TEST_F(FailingTransaction, at_the_3000th_poll_fetches_no_answer)
{
    fail_poll(3000);
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(happened(joined({FRAME, times(2999, POLL), FAILING_POLL})));
}

TEST_F(FailingTransaction, at_the_3001st_poll_is_no_timeout)
{
    fail_poll(3001);
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(happened(joined({FRAME, times(3000, POLL), FAILING_POLL})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingTransaction, at_the_answer_has_no_answer)
{
    answer_poll(1, 0x55);
    fail_exchange(3, EIO);
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(happened(joined({FRAME, POLL, ANSWER, {ANSWER_FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingTransaction, at_the_answer_after_a_timeout_tells_both)
{
    fail_exchange(3003, EIO);
    EXPECT_EQ(send(), -1);
    EXPECT_TRUE(happened(joined({FRAME, times(3001, POLL), {TIMEOUT}, ANSWER, {ANSWER_FAILED}})));
    EXPECT_STREQ(stm_link.message, "Error stm_com_funcs: SPI timeout\n");
}

TEST_F(FailingTransaction, readiness_in_the_3000th_poll_is_in_time)
{
    answer_poll(3000, 0x55);
    answer(3002, {0x34, 0x12});
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, times(3000, POLL), ANSWER})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingTransaction, readiness_in_the_2999th_poll_is_in_time)
{
    answer_poll(2999, 0x55);
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, times(2999, POLL), ANSWER})));
}

TEST_F(FailingTransaction, readiness_in_the_3001st_poll_is_a_timeout)
{
    answer_poll(3001, 0x55);
    answer(3003, {0x34, 0x12});
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, times(3001, POLL), {TIMEOUT}, ANSWER})));
}

TEST_F(FailingTransaction,
       readiness_that_never_comes_is_a_timeout_whose_answer_is_read_all_the_same)
{
    answer(3003, {0xFF, 0xFF});
    EXPECT_EQ(send(), 65535);
    EXPECT_TRUE(happened(joined({FRAME, times(3001, POLL), {TIMEOUT}, ANSWER})));
    EXPECT_STREQ(stm_link.message, "Error stm_com_funcs: SPI timeout\n");
}

TEST_F(FailingTransaction, timeout_returns_the_answer_and_not_what_the_output_returned)
{
    output_result = 12;
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(texts, Transcript({TIMEOUT}));
}

TEST_F(FailingTransaction, timeout_takes_three_seconds)
{
    EXPECT_EQ(send(), 0);
    EXPECT_EQ(slept_us, 3'001'000U);
}

TEST_F(FailingTransaction, stop_line_in_the_first_poll_sends_nothing_more)
{
    type_line(1, "s\n");
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, STOPPED_POLL})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingTransaction, stop_line_counts_before_the_readiness_of_its_poll)
{
    answer_poll(3, 0x55);
    answer(5, {0x34, 0x12});
    type_line(3, "s\n");
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, times(2, POLL), STOPPED_POLL})));
}

TEST_F(FailingTransaction, stop_line_in_the_3000th_poll_stops)
{
    type_line(3000, "s\n");
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, times(2999, POLL), STOPPED_POLL})));
}

TEST_F(FailingTransaction, stop_line_in_the_3001st_poll_is_no_timeout)
{
    type_line(3001, "s\n");
    answer(3003, {0x34, 0x12});
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, times(3000, POLL), STOPPED_POLL})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingTransaction, stop_line_with_result_0_has_not_been_typed)
{
    answer_poll(2, 0x55);
    answer(4, {0x34, 0x12});
    type_line(1, "s\n", 0);
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, times(2, POLL), ANSWER})));
}

TEST_P(StopResult, which_is_not_0_stops)
{
    type_line(2, "s\n", GetParam());
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, POLL, STOPPED_POLL})));
}

INSTANTIATE_TEST_SUITE_P(Each, StopResult, testing::Values(1, 2, 256, -1));

TEST_P(OtherLine, does_not_stop)
{
    answer_poll(2, 0x55);
    answer(4, {0x34, 0x12});
    type_line(1, GetParam());
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, times(2, POLL), ANSWER})));
}

INSTANTIATE_TEST_SUITE_P(Each, OtherLine,
                         testing::Values("s", "S\n", "s\n\n", "s\nx", "", "\n", " s\n", "ss\n",
                                         "s\r\n", "stop\n"));
