// Goal: the wait polls with its fixed rhythm, and every status, at every poll at which it can make
// a difference, ends it as it always did: the odd ones too.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cerrno>
#include <cstring>

using namespace stm;

namespace
{

// One poll that goes on, or that is the last and has been judged.
const Transcript POLL = {"sleep 10000", "exchange 1: 33", "poll", "sleep 1000"};

// One poll in which the operator stops.
const Transcript STOPPED_POLL = {"sleep 10000", "exchange 1: 33", "poll"};

class Handshake : public Dialogue
{
  protected:
    Handshake()
    {
        open_link();
        strcpy(stm_link.message, "the last report");
    }

    static int wait() { return stm_wait_for_ack(poll, output); }
};

struct Verdict {
    uint8_t status;
    const char *text;
};

class ErrorStatus : public Handshake, public testing::WithParamInterface<Verdict>
{
};

class LateStatus : public Handshake, public testing::WithParamInterface<Verdict>
{
};

class OtherLine : public Handshake, public testing::WithParamInterface<const char *>
{
};

} // namespace

TEST_F(Handshake, acknowledge_in_the_first_poll_succeeds_without_a_word)
{
    answer_statuses({0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(POLL));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(Handshake, polls_until_the_acknowledge_comes)
{
    answer_statuses({0x00, 0x33, 0x55, 0xF0});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(3, POLL)));
}

TEST_F(Handshake, no_status_below_0xF0_but_0x55_ends_the_wait)
{
    for (int status = 0; status < 0xF0; ++status) {
        forget();
        answer_statuses({static_cast<uint8_t>(status), 0x55});
        EXPECT_EQ(wait(), 1);
        EXPECT_TRUE(happened(times(status == 0x55 ? 1 : 2, POLL))) << "status " << status;
    }
}

TEST_F(Handshake, statuses_0xF2_to_0xFE_acknowledge_too)
{
    for (int status = 0xF2; status <= 0xFE; ++status) {
        forget();
        answer_statuses({static_cast<uint8_t>(status)});
        EXPECT_EQ(wait(), 1) << "status " << status;
        EXPECT_TRUE(happened(POLL)) << "status " << status;
        EXPECT_STREQ(stm_link.message, "the last report");
    }
}

TEST_P(ErrorStatus, ends_the_wait_at_once_with_its_text)
{
    answer_statuses({GetParam().status, 0x55});
    EXPECT_EQ(wait(), -1);
    EXPECT_TRUE(happened(joined({POLL, {say(GetParam().text)}})));
    EXPECT_EQ(messages, Transcript({say(GetParam().text)}));
    EXPECT_STREQ(stm_link.message, GetParam().text);
}

TEST_P(ErrorStatus, is_told_after_busy_polls_too)
{
    answer_statuses({0x00, 0x54, GetParam().status});
    EXPECT_EQ(wait(), -1);
    EXPECT_TRUE(happened(joined({times(3, POLL), {say(GetParam().text)}})));
}

INSTANTIATE_TEST_SUITE_P(Each, ErrorStatus,
                         testing::Values(Verdict{0xFF, "SPI Bus inactive\n"},
                                         Verdict{0xF0, "Checksum error\n"},
                                         Verdict{0xF1, "Address error\n"}));

TEST_F(Handshake, result_of_a_reported_error_is_not_that_of_the_output)
{
    output_result = 12;
    answer_statuses({0xF0});
    EXPECT_EQ(wait(), -1);
}

TEST_F(Handshake, acknowledge_in_the_1500th_poll_is_in_time)
{
    answer(1500, {0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(1500, POLL)));
}

TEST_F(Handshake, status_0xF7_in_the_1500th_poll_is_in_time)
{
    answer(1500, {0xF7});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(1500, POLL)));
}

TEST_P(LateStatus, in_the_1501st_poll_is_told_as_an_error_or_a_timeout)
{
    answer(1501, {GetParam().status});
    answer(1502, {0x55});
    EXPECT_EQ(wait(), -1);
    EXPECT_TRUE(happened(joined({times(1501, POLL), {say(GetParam().text)}})));
    EXPECT_STREQ(stm_link.message, GetParam().text);
}

// An acknowledge that comes so late is none; an error is still told as what it is.
INSTANTIATE_TEST_SUITE_P(
    Each, LateStatus,
    testing::Values(Verdict{0x00, "SPI timeout\n"}, Verdict{0x55, "SPI timeout\n"},
                    Verdict{0xF2, "SPI timeout\n"}, Verdict{0xF7, "SPI timeout\n"},
                    Verdict{0xFE, "SPI timeout\n"}, Verdict{0xF0, "Checksum error\n"},
                    Verdict{0xF1, "Address error\n"}, Verdict{0xFF, "SPI Bus inactive\n"}));

TEST_F(Handshake, time_out_takes_16_and_a_half_seconds)
{
    EXPECT_EQ(wait(), -1);
    EXPECT_EQ(slept_us, 16'511'000U);
}

TEST_F(Handshake, failing_exchange_ends_the_wait_before_the_input_is_polled)
{
    fail_exchange(1, EIO);
    EXPECT_EQ(wait(), -1);
    EXPECT_TRUE(happened({"sleep 10000", "exchange 1: 33", "perror \"SPI wait for ACK\" EIO"}));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(Handshake, failing_exchange_in_a_later_poll_ends_the_wait)
{
    fail_exchange(3, ESHUTDOWN);
    EXPECT_EQ(wait(), -1);
    EXPECT_TRUE(happened(joined({
        times(2, POLL),
        {"sleep 10000", "exchange 1: 33", "perror \"SPI wait for ACK\" ESHUTDOWN"},
    })));
}

TEST_F(Handshake, failing_exchange_in_the_1501st_poll_is_no_timeout)
{
    fail_exchange(1501, EIO);
    EXPECT_EQ(wait(), -1);
    EXPECT_TRUE(happened(joined({
        times(1500, POLL),
        {"sleep 10000", "exchange 1: 33", "perror \"SPI wait for ACK\" EIO"},
    })));
}

TEST_F(Handshake, stop_line_in_the_first_poll_ends_the_wait)
{
    type_line(1, "s\n");
    EXPECT_EQ(wait(), 0);
    EXPECT_TRUE(happened(STOPPED_POLL));
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(Handshake, stop_line_counts_before_the_status_of_its_poll)
{
    for (const uint8_t status : Bytes{0x55, 0xF0, 0xF1, 0xF7, 0xFF}) {
        forget();
        answer(2, {status});
        type_line(2, "s\n");
        EXPECT_EQ(wait(), 0);
        EXPECT_TRUE(happened(joined({POLL, STOPPED_POLL}))) << "status " << status;
    }
}

TEST_F(Handshake, stop_line_in_the_1501st_poll_is_no_timeout)
{
    type_line(1501, "s\n");
    EXPECT_EQ(wait(), 0);
    EXPECT_TRUE(happened(joined({times(1500, POLL), STOPPED_POLL})));
}

TEST_F(Handshake, stop_line_with_result_0_has_not_been_typed)
{
    answer_statuses({0x00, 0x55});
    type_line(1, "s\n", 0);
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(2, POLL)));
}

TEST_P(OtherLine, does_not_stop_the_wait)
{
    answer_statuses({0x00, 0x55});
    type_line(1, GetParam());
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(2, POLL)));
}

INSTANTIATE_TEST_SUITE_P(Each, OtherLine, testing::Values("s", "s\nx", "\n", "", "stop\n", "S\n"));

TEST_F(Handshake, only_byte_0_of_both_buffers_changes)
{
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
    answer_statuses({0x00, 0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({{0x33}, bytes_of(4095, 0x5A)}));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({{0x55}, bytes_of(4095, 0xA5)}));
}

TEST_F(Handshake, status_of_an_earlier_exchange_is_not_taken_for_an_answer)
{
    memset(stm_link.rx_buffer, 0x55, sizeof(stm_link.rx_buffer));
    answer_statuses({0x00, 0x00, 0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(3, POLL)));
}

TEST_F(Handshake, uses_the_shared_descriptor_even_before_any_download)
{
    const spi_ioc_transfer zero = {};
    ASSERT_EQ(memcmp(&stm_link.transfer, &zero, sizeof(zero)), 0);
    watch = [](const spi_ioc_transfer &used) { EXPECT_EQ(&used, &stm_link.transfer); };
    answer_statuses({0x00, 0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(2, POLL)));
    EXPECT_EQ(stm_link.transfer.len, 1U);
}

TEST_F(Handshake, of_a_prepared_descriptor_only_the_length_changes)
{
    link_prepare_transfer(stm_link.transfer);
    spi_ioc_transfer expected = stm_link.transfer;
    expected.len = 1;
    stm_link.transfer.len = 1034;
    answer_statuses({0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(memcmp(&stm_link.transfer, &expected, sizeof(expected)), 0);
}

TEST_F(Handshake, each_wait_has_all_its_polls)
{
    EXPECT_EQ(wait(), -1);
    forget();
    answer(1500, {0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(times(1500, POLL)));
}

TEST_F(Handshake, exchange_that_returns_0_has_not_failed)
{
    exchange_result = 0;
    answer_always({0x55});
    EXPECT_EQ(wait(), 1);
    EXPECT_TRUE(happened(POLL));
}

TEST_F(Handshake, status_that_does_not_come_back_is_the_one_before)
{
    bytes_come_back = false;
    stm_link.rx_buffer[0] = 0x55;
    EXPECT_EQ(wait(), 1);
    stm_link.rx_buffer[0] = 0xF0;
    EXPECT_EQ(wait(), -1);
    EXPECT_TRUE(happened(joined({POLL, POLL, {say("Checksum error\n")}})));
}
