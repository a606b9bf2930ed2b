// Goal: every query goes on after a stop and a time-out with the length it has, and says nothing
// after a failure but what the system said.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

#include <cerrno>

namespace
{

struct Query {
    const char *name;
    uint8_t code;
    Bytes params;
    void (*ask)(StmPollFn, StmOutputFn);
    const char *of_nothing; // printed of no bytes where 0x21 came last
    const char *of_two;     // printed of the reply FE FF
};

using Ask = void (*)(StmPollFn, StmOutputFn);
using AskChannel = void (*)(int, StmPollFn, StmOutputFn);

template <AskChannel ASK>
void channel_1(StmPollFn poll, StmOutputFn output)
{
    ASK(1, poll, output);
}

template <auto READ>
void read_at_BEEF(StmPollFn poll, StmOutputFn output)
{
    READ(0xBEEF, poll, output);
}

void dump_one_byte(StmPollFn poll, StmOutputFn output)
{
    stm_dump_bytes(0xBEEF, 1, poll, output);
}

Query byte_query(const char *name, uint8_t code, Ask ask)
{
    return {name, code, {}, ask, "33\n", "254\n"};
}

Query long_query(const char *name, uint8_t code, const Bytes &params, Ask ask)
{
    return {name, code, params, ask, "0\n", "65534\n"};
}

Query short_query(const char *name, uint8_t code, const Bytes &params, Ask ask)
{
    return {name, code, params, ask, "0\n", "-2\n"};
}

Query text_query(const char *name, uint8_t code, Ask ask)
{
    return {name, code, {}, ask, "\n", "\xFE\xFF\n"};
}

std::vector<Query> all_queries()
{
    return {
        byte_query("byte_value_73", 0x73, stm_query_byte_value_73),
        byte_query("byte_value_C7", 0xC7, stm_query_byte_value_C7),
        byte_query("byte_value_05", 0x05, stm_query_byte_value_05),
        byte_query("byte_value_04", 0x04, stm_query_byte_value_04),
        long_query("long", 0xA0, {}, stm_query_long),
        short_query("short", 0x03, {}, stm_query_short),
        text_query("text_21", 0x21, stm_query_text_21),
        text_query("text_22", 0x22, stm_query_text_22),
        long_query("channel_06", 0x06, {1}, channel_1<stm_query_channel_06>),
        long_query("channel_07", 0x07, {1}, channel_1<stm_query_channel_07>),
        short_query("channel_08", 0x08, {1}, channel_1<stm_query_channel_08>),
        short_query("channel_09", 0x09, {1}, channel_1<stm_query_channel_09>),
        short_query("channel_0A", 0x0A, {1}, channel_1<stm_query_channel_0A>),
        short_query("channel_0B", 0x0B, {1}, channel_1<stm_query_channel_0B>),
        short_query("channel_0C", 0x0C, {1}, channel_1<stm_query_channel_0C>),
        short_query("channel_0D", 0x0D, {1}, channel_1<stm_query_channel_0D>),
        short_query("channel_95", 0x95, {1}, channel_1<stm_query_channel_95>),
        short_query("channel_96", 0x96, {1}, channel_1<stm_query_channel_96>),
        long_query("channel_99", 0x99, {1}, channel_1<stm_query_channel_99>),
        long_query("channel_9A", 0x9A, {1}, channel_1<stm_query_channel_9A>),
        {"char", 0x62, {0xEF, 0xBE}, read_at_BEEF<stm_read_char>, "!\n", "\xFE\n"},
        {"byte", 0x62, {0xEF, 0xBE}, read_at_BEEF<stm_read_byte>, "33\n", "254\n"},
        {"dump", 0x75, {0xEF, 0xBE, 1, 0}, dump_one_byte, "0x21\n", "0xFE\n"},
    };
}

class EveryQuery : public Acquisition, public testing::WithParamInterface<Query>
{
  protected:
    static void ask() { GetParam().ask(poll, output); }

    static Transcript whole_transaction()
    {
        return transaction(GetParam().code, GetParam().params);
    }

    // The frame as it stands in the transmit buffer, without its first bytes.
    static Bytes frame_from(size_t begin)
    {
        Bytes bytes = chained({{GetParam().code}, GetParam().params});
        bytes.resize(7, 0x00);
        bytes.push_back(0xAA);
        bytes.resize(48, 0x00);
        bytes.resize(4096, STALE_TX);
        return Bytes(bytes.data() + begin, bytes.data() + bytes.size());
    }
};

std::string name_of(const testing::TestParamInfo<Query> &info)
{
    return info.param.name;
}

} // namespace

TEST_P(EveryQuery, whose_frame_fails_has_no_reply)
{
    reply_with({0xFE, 0xFF});
    fail_exchange(1, EIO);
    ask();
    EXPECT_TRUE(happened(failed_transaction(1, GetParam().code, GetParam().params)));
    EXPECT_TRUE(message_is_untouched());
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), frame_from(0));
}

TEST_P(EveryQuery, whose_poll_fails_has_no_reply)
{
    reply_with({0xFE, 0xFF});
    fail_exchange(2, EIO);
    ask();
    EXPECT_TRUE(happened(failed_transaction(2, GetParam().code, GetParam().params)));
    EXPECT_TRUE(message_is_untouched());
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({{0x44}, frame_from(1)}));
}

TEST_P(EveryQuery, whose_length_cannot_be_read_has_no_reply)
{
    reply_with({0xFE, 0xFF});
    fail_exchange(3, EIO);
    ask();
    EXPECT_TRUE(happened(failed_transaction(3, GetParam().code, GetParam().params)));
    EXPECT_TRUE(message_is_untouched());
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), chained({{0x00, 0x00}, frame_from(2)}));
}

TEST_P(EveryQuery, whose_reply_fails_prints_nothing)
{
    fail_reply(2, ESHUTDOWN);
    ask();
    EXPECT_TRUE(happened(
        joined({whole_transaction(), reply(2), {R"(perror "SPI datatransfer" ESHUTDOWN)"}})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_P(EveryQuery, whose_reply_is_too_long_for_the_driver_prints_nothing)
{
    for (const uint16_t length : std::initializer_list<uint16_t>{4097, 32768, 65535}) {
        begin_again();
        announce(length, bytes_of(4096, 0x11));
        ask();
        EXPECT_TRUE(
            happened(joined({whole_transaction(), {R"(perror "SPI datatransfer" EMSGSIZE)"}})));
        EXPECT_TRUE(message_is_untouched());
        EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
    }
}

TEST_P(EveryQuery, takes_a_reply_of_4096_bytes)
{
    reply_with(bytes_of(4096, 0x11));
    ask();
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x11));
    EXPECT_EQ(texts.size(), 1U);
}

TEST_P(EveryQuery, that_is_stopped_goes_on_with_no_bytes)
{
    answer(1, FRAME_ECHO);
    answer(2, {0x21});
    type_line(1, "s\n");
    ask();
    EXPECT_TRUE(happened(joined({stopped_transaction(GetParam().code, GetParam().params),
                                 reply(0),
                                 {say(GetParam().of_nothing)}})));
    EXPECT_TRUE(message_is_untouched());
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
}

TEST_P(EveryQuery, that_is_stopped_and_then_fails_prints_nothing)
{
    type_line(1, "s\n");
    fail_exchange(3, EIO);
    ask();
    EXPECT_TRUE(happened(joined({stopped_transaction(GetParam().code, GetParam().params),
                                 reply(0),
                                 {R"(perror "SPI datatransfer" EIO)"}})));
}

TEST_P(EveryQuery, that_times_out_goes_on_with_the_length_it_reads)
{
    answer(3003, {0x02, 0x00});
    answer(3004, {0xFE, 0xFF});
    ask();
    EXPECT_TRUE(happened(joined({timed_out_transaction(GetParam().code, GetParam().params),
                                 reply(2),
                                 {say(GetParam().of_two)}})));
    EXPECT_STREQ(stm_link.message, "Error stm_com_funcs: SPI timeout\n");
}

TEST_P(EveryQuery, waits_for_its_answer)
{
    answer(4, {0x55});
    answer(5, {0x02, 0x00});
    answer(6, {0xFE, 0xFF});
    ask();
    EXPECT_TRUE(happened(joined({{frame(GetParam().code, GetParam().params)},
                                 times(3, {"exchange 1: 44", "poll", "sleep 1000"}),
                                 {"exchange 2: 00 00"},
                                 reply(2),
                                 {say(GetParam().of_two)}})));
}

INSTANTIATE_TEST_SUITE_P(Each, EveryQuery, testing::ValuesIn(all_queries()), name_of);
