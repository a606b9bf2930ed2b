// Goal: the fifty bytes are awaited with one wait that ends without a pause, and every exchange
// that fails ends their read-out without a word of them.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

constexpr char FAILED[] = R"(perror "SPI datatransfer" EIO)";
constexpr char TIMEOUT[] = R"(say 0 "SPI timeout\n")";

const Transcript COMMAND = {"exchange 8: 01 00*6 AA"};
const Transcript POLL = {"exchange 1: 44", "poll"};
const Transcript FAILING_POLL = {"exchange 1: 44", FAILED};
const Transcript FETCHED = {"exchange 50: 66*50"};

class RawBytesWait : public Dialogue
{
  protected:
    static constexpr int NOTHING_SHOWN = 0; // no ReadoutMode

    RawBytesWait()
    {
        open_link();
        memset(stm_link.rx_buffer, 0x55, sizeof(stm_link.rx_buffer));
        strcpy(stm_link.message, "the last report");
        answer(1, bytes_of(8, 0x55));
    }

    // Poll n is exchange n + 1.
    void ready_in_poll(int number) { answer(number + 1, {0x55}); }
    void fail_poll(int number) { fail_exchange(number + 1, EIO); }

    static void read(int mode) { stm_read_raw_bytes(mode, poll, output); }
};

class FailingRawBytes : public RawBytesWait
{
};

class OtherLine : public RawBytesWait, public testing::WithParamInterface<const char *>
{
};

// The transcript of bytes that are ready in this poll, of which nothing is shown.
Transcript unshown(int polls)
{
    return joined({COMMAND, times(polls, POLL), FETCHED});
}

} // namespace

TEST_F(RawBytesWait, readiness_that_comes_in_with_the_command_is_none)
{
    ready_in_poll(2);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(2)));
}

TEST_F(RawBytesWait, no_status_but_0x55_is_readiness)
{
    answer(2, {0x54});
    answer(3, {0x44});
    answer(4, {0xF0});
    answer(5, {0xFF});
    ready_in_poll(5);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(5)));
}

TEST_F(RawBytesWait, readiness_in_the_300th_poll_is_in_time)
{
    ready_in_poll(300);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(300)));
}

TEST_F(RawBytesWait, readiness_in_the_301st_poll_is_a_timeout)
{
    ready_in_poll(301);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(joined({COMMAND, times(301, POLL), {TIMEOUT}, FETCHED})));
}

TEST_F(RawBytesWait, timeout_is_told_and_waited_out_neither_by_a_pause_nor_by_a_second_wait)
{
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(joined({COMMAND, times(301, POLL), {TIMEOUT}, FETCHED})));
    EXPECT_EQ(messages, Transcript({TIMEOUT}));
    EXPECT_STREQ(stm_link.message, "SPI timeout\n");
    EXPECT_EQ(slept_us, 0U);
}

TEST_F(RawBytesWait, stop_line_in_the_first_poll_fetches_nothing)
{
    ready_in_poll(1);
    type_line(1, "s\n");
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({COMMAND, POLL})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(RawBytesWait, stop_line_in_the_301st_poll_is_no_timeout)
{
    type_line(301, "s\n");
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({COMMAND, times(301, POLL)})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(RawBytesWait, stop_line_with_result_0_has_not_been_typed)
{
    type_line(1, "s\n", 0);
    ready_in_poll(2);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(2)));
}

TEST_P(OtherLine, does_not_stop_the_read_out)
{
    type_line(1, GetParam());
    ready_in_poll(2);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(2)));
}

INSTANTIATE_TEST_SUITE_P(Each, OtherLine,
                         testing::Values("s", "S\n", "s\nx", "", "\n", " s\n", "stop\n"));

TEST_F(FailingRawBytes, at_the_command_polls_nothing)
{
    fail_exchange(1, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({COMMAND, {FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingRawBytes, tells_the_reason_of_the_system)
{
    fail_exchange(1, ESHUTDOWN);
    read(READOUT_CSV);
    EXPECT_TRUE(happened(joined({COMMAND, {R"(perror "SPI datatransfer" ESHUTDOWN)"}})));
}

TEST_F(FailingRawBytes, at_the_first_poll_ends_before_the_input_is_polled)
{
    fail_poll(1);
    type_line(1, "s\n");
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({COMMAND, FAILING_POLL})));
}

TEST_F(FailingRawBytes, at_a_later_poll_fetches_nothing)
{
    fail_poll(3);
    read(READOUT_HEX);
    EXPECT_TRUE(happened(joined({COMMAND, times(2, POLL), FAILING_POLL})));
}

TEST_F(FailingRawBytes, at_the_301st_poll_is_no_timeout)
{
    fail_poll(301);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({COMMAND, times(300, POLL), FAILING_POLL})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingRawBytes, at_the_bytes_shows_nothing)
{
    ready_in_poll(1);
    fail_exchange(3, EIO);
    read(READOUT_TEXT);
    EXPECT_TRUE(happened(joined({COMMAND, POLL, FETCHED, {FAILED}})));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(FailingRawBytes, at_the_bytes_after_a_timeout_tells_both)
{
    fail_exchange(303, EIO);
    read(READOUT_HEX);
    EXPECT_TRUE(happened(joined({COMMAND, times(301, POLL), {TIMEOUT}, FETCHED, {FAILED}})));
}

TEST_F(FailingRawBytes, exchange_that_returns_0_has_not_failed)
{
    exchange_result = 0;
    ready_in_poll(1);
    read(NOTHING_SHOWN);
    EXPECT_TRUE(happened(unshown(1)));
}
