// Goal: every channel query accepts its channels, tested as a whole, names the others in a text of
// its own, and prints its number in its width.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

#include <climits>

namespace
{

struct ChannelQuery {
    const char *name;
    uint8_t code;
    int most;
    const char *refusal; // the number and ")\n" come behind it
    void (*ask)(int, StmPollFn, StmOutputFn);
};

constexpr ChannelQuery LONG_QUERIES[] = {
    {"channel_06", 0x06, 7, "Wrong ADC channel (", stm_query_channel_06},
    {"channel_07", 0x07, 7, "Wrong ADC channel (", stm_query_channel_07},
    {"channel_99", 0x99, 7, "Wrong ADC channel (", stm_query_channel_99},
    {"channel_9A", 0x9A, 7, "Wrong BE channel (", stm_query_channel_9A},
};

constexpr ChannelQuery SHORT_QUERIES[] = {
    {"channel_08", 0x08, 1, "Wrong channel (", stm_query_channel_08},
    {"channel_09", 0x09, 1, "Wrong channel (", stm_query_channel_09},
    {"channel_0A", 0x0A, 1, "Wrong channel (", stm_query_channel_0A},
    {"channel_0B", 0x0B, 1, "Wrong channel (", stm_query_channel_0B},
    {"channel_0C", 0x0C, 1, "Wrong channel (", stm_query_channel_0C},
    {"channel_0D", 0x0D, 1, "Wrong channel (", stm_query_channel_0D},
    {"channel_95", 0x95, 1, "Wrong BE channel (", stm_query_channel_95},
    {"channel_96", 0x96, 1, "Wrong BE channel (", stm_query_channel_96},
};

class EveryChannelQuery : public Acquisition, public testing::WithParamInterface<ChannelQuery>
{
  protected:
    // In a dialogue of its own the channel is asked for and this printed.
    void expect_printed(int channel, const Bytes &came, const char *text)
    {
        begin_again();
        reply_with(came);
        GetParam().ask(channel, poll, output);
        EXPECT_TRUE(happened(joined(
            {query(GetParam().code, {static_cast<uint8_t>(channel)}, came.size()), {say(text)}})));
        EXPECT_TRUE(message_is_untouched());
    }

    // In a dialogue of its own the channel is told as wrong, and nothing else happens.
    void expect_refused(int channel)
    {
        begin_again();
        GetParam().ask(channel, poll, output);
        EXPECT_TRUE(happened({say(GetParam().refusal + std::to_string(channel) + ")\n", 0)}));
        EXPECT_TRUE(message_is_untouched());
        EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, STALE_TX));
        EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, STALE_RX));
    }
};

class LongChannelQuery : public EveryChannelQuery
{
};

class ShortChannelQuery : public EveryChannelQuery
{
};

std::string name_of(const testing::TestParamInfo<ChannelQuery> &info)
{
    return info.param.name;
}

using ChannelQueryText = Acquisition;

} // namespace

TEST_P(EveryChannelQuery, asks_for_each_of_its_channels)
{
    for (int channel = 0; channel <= GetParam().most; ++channel) {
        expect_printed(channel, {0x34, 0x12}, "4660\n");
    }
}

TEST_P(EveryChannelQuery, refuses_what_lies_one_beyond_either_end)
{
    expect_refused(-1);
    expect_refused(GetParam().most + 1);
}

TEST_P(EveryChannelQuery, refuses_what_is_in_range_by_its_low_bits_alone)
{
    expect_refused(256);
    expect_refused(257);
    expect_refused(65536);
    expect_refused(-256);
    expect_refused(INT_MIN);
}

TEST_P(EveryChannelQuery, refuses_the_largest_numbers)
{
    expect_refused(8);
    expect_refused(255);
    expect_refused(INT_MAX);
}

INSTANTIATE_TEST_SUITE_P(Long, EveryChannelQuery, testing::ValuesIn(LONG_QUERIES), name_of);
INSTANTIATE_TEST_SUITE_P(Short, EveryChannelQuery, testing::ValuesIn(SHORT_QUERIES), name_of);

TEST_P(LongChannelQuery, prints_32_bits_and_a_sign)
{
    expect_printed(7, {0x78, 0x56, 0x34, 0x12}, "305419896\n");
    expect_printed(7, {0xFE, 0xFF, 0xFF, 0xFF}, "-2\n");
    expect_printed(7, {0xFF, 0xFF, 0xFF, 0x7F}, "2147483647\n");
    expect_printed(7, {0x00, 0x00, 0x00, 0x80}, "-2147483648\n");
    expect_printed(7, {0xFE, 0xFF, 0xFF, 0xFF, 0x00}, "-2\n");
}

TEST_P(LongChannelQuery, takes_missing_bytes_as_0)
{
    expect_printed(6, {}, "0\n");
    expect_printed(6, {0xFE}, "254\n");
    expect_printed(6, {0xFE, 0xFF}, "65534\n");
    expect_printed(6, {0xFE, 0xFF, 0xFF}, "16777214\n");
}

INSTANTIATE_TEST_SUITE_P(Each, LongChannelQuery, testing::ValuesIn(LONG_QUERIES), name_of);

TEST_P(ShortChannelQuery, prints_16_bits_and_a_sign)
{
    expect_printed(1, {0x34, 0x12}, "4660\n");
    expect_printed(1, {0xFE, 0xFF}, "-2\n");
    expect_printed(1, {0xFF, 0x7F}, "32767\n");
    expect_printed(1, {0x00, 0x80}, "-32768\n");
    expect_printed(1, {0xFE, 0xFF, 0x00, 0x00}, "-2\n");
}

TEST_P(ShortChannelQuery, takes_missing_bytes_as_0)
{
    expect_printed(0, {}, "0\n");
    expect_printed(0, {0xFE}, "254\n");
}

INSTANTIATE_TEST_SUITE_P(Each, ShortChannelQuery, testing::ValuesIn(SHORT_QUERIES), name_of);

TEST_F(ChannelQueryText, names_a_BE_channel_for_code_9A_although_it_has_eight)
{
    reply_with({0x01, 0x00, 0x00, 0x00});
    stm_query_channel_9A(5, poll, output);
    stm_query_channel_9A(8, poll, output);
    EXPECT_TRUE(happened(
        joined({query(0x9A, {5}, 4), {R"(say 0 "1\n")", R"(say 0 "Wrong BE channel (8)\n")"}})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(ChannelQueryText, of_the_longest_number_is_whole)
{
    stm_query_channel_06(INT_MIN, poll, output);
    EXPECT_TRUE(happened({R"(say 0 "Wrong ADC channel (-2147483648)\n")"}));
}
