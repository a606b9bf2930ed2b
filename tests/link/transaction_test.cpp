// Goal: a parameter command puts exactly its frame, its polls and its answer read on the wire, in
// buffers of which it clears and keeps the same bytes as ever.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

#include <cstring>

using namespace stm;

namespace
{

// One poll that goes on, or that is the last.
const Transcript POLL = {"exchange 1: 44", "poll", "sleep 1000"};
const Transcript FRAME = {"exchange 8: 6F 01 02 03 04 05 06 AA"};
const Transcript ANSWER = {"exchange 2: 00 00"};
const Transcript NOTHING = {};

class Transaction : public Dialogue
{
  protected:
    Transaction()
    {
        open_link();
        strcpy(stm_link.message, "the last report");
    }

    static int32_t send()
    {
        const uint8_t params[6] = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06};
        return stm_param_command(0x6F, params, poll, output);
    }

    // Ready in the first poll, with this answer.
    void answer_at_once(const Bytes &answer_bytes)
    {
        answer(2, {0x55});
        answer(3, answer_bytes);
    }
};

struct AnswerValue {
    Bytes bytes;
    int32_t value;
};

class Answers : public Transaction, public testing::WithParamInterface<AnswerValue>
{
};

// Changes the status that came back: 0x54 to ready, and ready to 0x56.
int change_status(char *)
{
    ++stm_link.rx_buffer[0];
    return 0;
}

// Fills the line to its last character; a shorter one would be overrun.
int fill_line(char *line)
{
    memset(line, 's', 49);
    line[49] = '\0';
    return 1;
}

} // namespace

TEST_F(Transaction, of_a_co_processor_that_is_ready_takes_three_exchanges)
{
    answer_at_once({0x34, 0x12});
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, POLL, ANSWER})));
    EXPECT_EQ(texts, NOTHING);
    EXPECT_STREQ(stm_link.message, "the last report");
}

TEST_F(Transaction, polls_until_the_co_processor_is_ready)
{
    answer_statuses({0xEE, 0x00, 0x44, 0x55});
    answer(5, {0x34, 0x12});
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, times(3, POLL), ANSWER})));
}

TEST_F(Transaction, readiness_in_the_second_poll_takes_two)
{
    answer(3, {0x55});
    answer(4, {0x34, 0x12});
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, times(2, POLL), ANSWER})));
}

TEST_F(Transaction, no_status_but_0x55_says_ready)
{
    for (int status = 0; status < 256; ++status) {
        forget();
        answer(2, {static_cast<uint8_t>(status)});
        answer(3, {0x55});
        EXPECT_EQ(send(), status == 0x55 ? 0x0055 : 0x0000);
        EXPECT_TRUE(happened(joined({FRAME, times(status == 0x55 ? 1 : 2, POLL), ANSWER})))
            << "status " << status;
    }
}

TEST_F(Transaction, status_that_comes_back_during_the_frame_is_not_looked_at)
{
    answer(1, {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55});
    answer(3, {0x55});
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, times(2, POLL), ANSWER})));
}

TEST_F(Transaction, readiness_is_judged_after_the_callback)
{
    answer_statuses({0x00, 0x55, 0x54});
    answer(4, {0x34, 0x12});
    EXPECT_EQ(stm_command(0, 0, 0, 0, 0, change_status, output), 4660);
    EXPECT_TRUE(happened({
        "exchange 8: 00*7 AA",
        "exchange 1: 44",
        "sleep 1000",
        "exchange 1: 44",
        "sleep 1000",
        "exchange 2: 00 00",
    }));
}

TEST_P(Answers, are_two_bytes_low_byte_first)
{
    answer_at_once(GetParam().bytes);
    EXPECT_EQ(send(), GetParam().value);
    EXPECT_TRUE(happened(joined({FRAME, POLL, ANSWER})));
}

INSTANTIATE_TEST_SUITE_P(
    Each, Answers,
    testing::Values(AnswerValue{{0x00, 0x00}, 0}, AnswerValue{{0x01, 0x00}, 1},
                    AnswerValue{{0x00, 0x01}, 256}, AnswerValue{{0x34, 0x12}, 0x1234},
                    AnswerValue{{0xFF, 0x00}, 255}, AnswerValue{{0x80, 0x00}, 128},
                    AnswerValue{{0xFF, 0x7F}, 0x7FFF}, AnswerValue{{0x00, 0x80}, 0x8000},
                    AnswerValue{{0xFF, 0xFF}, 0xFFFF}));

TEST_F(Transaction, every_code_travels_as_it_is)
{
    for (int code = 0; code < 256; ++code) {
        forget();
        answer_at_once({});
        const auto byte = static_cast<uint8_t>(code);
        EXPECT_EQ(stm_command(byte, 0xFF, 0x80, 0x7F, 0x01, poll, output), 0);
        const std::string frame = exchange({byte, 0xFF, 0x80, 0x7F, 0x01, 0x00, 0x00, 0xAA});
        EXPECT_TRUE(happened(joined({{frame}, POLL, ANSWER}))) << "code " << code;
    }
}

TEST_F(Transaction, each_has_its_own_polls_and_leaves_none_to_the_next)
{
    answer_always({0x00});
    EXPECT_EQ(send(), 0);
    forget();
    answer(3001, {0x55});
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, times(3000, POLL), ANSWER})));
}

TEST_F(Transaction, exchange_that_returns_0_has_not_failed)
{
    exchange_result = 0;
    answer_at_once({0x34, 0x12});
    EXPECT_EQ(send(), 4660);
    EXPECT_TRUE(happened(joined({FRAME, POLL, ANSWER})));
}

TEST_F(Transaction, a_line_has_room_for_50_characters)
{
    answer(3, {0x55});
    answer(4, {0x34, 0x12});
    EXPECT_EQ(stm_command(0, 0, 0, 0, 0, fill_line, output), 4660);
}

TEST_F(Transaction, polls_replace_the_code_alone_and_the_answer_read_the_first_parameter_too)
{
    std::vector<Bytes> held;
    watch = [&held](const spi_ioc_transfer &) {
        held.emplace_back(stm_link.tx_buffer, stm_link.tx_buffer + 9);
    };
    answer(4, {0x55});
    EXPECT_EQ(send(), 0);
    ASSERT_EQ(held.size(), 5U);
    EXPECT_EQ(held[0], Bytes({0x6F, 1, 2, 3, 4, 5, 6, 0xAA, 0}));
    for (size_t i = 1; i <= 3; ++i) {
        EXPECT_EQ(held[i], Bytes({0x44, 1, 2, 3, 4, 5, 6, 0xAA, 0})) << "poll " << i;
    }
    EXPECT_EQ(held[4], Bytes({0x00, 0, 2, 3, 4, 5, 6, 0xAA, 0}));
}

TEST_F(Transaction, poll_byte_is_put_in_place_again_for_each_poll)
{
    watch = [](const spi_ioc_transfer &) { stm_link.tx_buffer[0] = 0x77; };
    answer(4, {0x55});
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({FRAME, times(3, POLL), ANSWER})));
}

TEST_F(Transaction, leaves_what_came_back_during_the_frame_behind_the_answer)
{
    memset(stm_link.rx_buffer, 0xA5, sizeof(stm_link.rx_buffer));
    answer(1, {0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7});
    answer_at_once({0x34, 0x12});
    EXPECT_EQ(send(), 4660);
    const Bytes received = {0x34, 0x12, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7};
    EXPECT_EQ(bytes_in(stm_link.rx_buffer),
              chained({received, bytes_of(40, 0x00), bytes_of(4048, 0xA5)}));
}

TEST_F(Transaction, readiness_and_answer_of_an_earlier_one_are_cleared)
{
    memset(stm_link.rx_buffer, 0x55, sizeof(stm_link.rx_buffer));
    bytes_come_back = false;
    EXPECT_EQ(send(), 0);
    EXPECT_TRUE(happened(joined({
        FRAME,
        times(3001, POLL),
        {"say 0 \"Error stm_com_funcs: SPI timeout\\n\""},
        ANSWER,
    })));
}
