// Goal: the queries of single numbers print what came, in its width and with its sign, and out of a
// buffer of their own.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

namespace
{

using Ask = void (*)(StmPollFn, StmOutputFn);

struct ByteQuery {
    uint8_t code;
    Ask ask;
};

struct Printed {
    Bytes reply;
    const char *text;
};

class ByteValue : public Acquisition, public testing::WithParamInterface<ByteQuery>
{
  protected:
    void expect_printed(const Bytes &came, const char *text)
    {
        begin_again();
        reply_with(came);
        GetParam().ask(poll, output);
        EXPECT_TRUE(happened(joined({query(GetParam().code, {}, came.size()), {say(text)}})));
        EXPECT_TRUE(message_is_untouched());
    }
};

class PrintedLong : public Acquisition, public testing::WithParamInterface<Printed>
{
};

class PrintedShort : public Acquisition, public testing::WithParamInterface<Printed>
{
};

using NumberQuery = Acquisition;

} // namespace

TEST_P(ByteValue, is_printed_without_a_sign)
{
    expect_printed({0x00}, "0\n");
    expect_printed({0x01}, "1\n");
    expect_printed({0x7F}, "127\n");
    expect_printed({0x80}, "128\n");
    expect_printed({0xFF}, "255\n");
}

TEST_P(ByteValue, is_the_first_byte_of_a_longer_reply)
{
    expect_printed({0x2A, 0x01, 0x02, 0x03, 0x04}, "42\n");
}

TEST_P(ByteValue, of_an_empty_reply_is_the_length_that_was_read_before)
{
    expect_printed({}, "0\n");
}

INSTANTIATE_TEST_SUITE_P(Each, ByteValue,
                         testing::Values(ByteQuery{0x73, stm_query_byte_value_73},
                                         ByteQuery{0xC7, stm_query_byte_value_C7},
                                         ByteQuery{0x05, stm_query_byte_value_05},
                                         ByteQuery{0x04, stm_query_byte_value_04}));

TEST_P(PrintedLong, has_32_bits_and_a_sign)
{
    reply_with(GetParam().reply);
    stm_query_long(poll, output);
    EXPECT_TRUE(
        happened(joined({query(0xA0, {}, GetParam().reply.size()), {say(GetParam().text)}})));
    EXPECT_TRUE(message_is_untouched());
}

INSTANTIATE_TEST_SUITE_P(Whole, PrintedLong,
                         testing::Values(Printed{{0x00, 0x00, 0x00, 0x00}, "0\n"},
                                         Printed{{0x78, 0x56, 0x34, 0x12}, "305419896\n"},
                                         Printed{{0xFF, 0xFF, 0xFF, 0xFF}, "-1\n"},
                                         Printed{{0xFE, 0xFF, 0xFF, 0xFF}, "-2\n"},
                                         Printed{{0xFF, 0xFF, 0xFF, 0x7F}, "2147483647\n"},
                                         Printed{{0x00, 0x00, 0x00, 0x80}, "-2147483648\n"},
                                         Printed{{0x00, 0x80, 0x00, 0x00}, "32768\n"}));

// What is missing counts as 0, and so does the sign; what the buffer holds there does not count.
INSTANTIATE_TEST_SUITE_P(Short, PrintedLong,
                         testing::Values(Printed{{}, "0\n"}, Printed{{0xFE}, "254\n"},
                                         Printed{{0xFE, 0xFF}, "65534\n"},
                                         Printed{{0xFE, 0xFF, 0xFF}, "16777214\n"}));

INSTANTIATE_TEST_SUITE_P(TooLong, PrintedLong,
                         testing::Values(Printed{{0xFE, 0xFF, 0xFF, 0xFF, 0x01}, "-2\n"},
                                         Printed{bytes_of(127, 0x11), "286331153\n"},
                                         Printed{bytes_of(128, 0x11), "286331153\n"},
                                         Printed{bytes_of(4096, 0x11), "286331153\n"}));

TEST_P(PrintedShort, has_16_bits_and_a_sign)
{
    reply_with(GetParam().reply);
    stm_query_short(poll, output);
    EXPECT_TRUE(
        happened(joined({query(0x03, {}, GetParam().reply.size()), {say(GetParam().text)}})));
    EXPECT_TRUE(message_is_untouched());
}

INSTANTIATE_TEST_SUITE_P(
    Whole, PrintedShort,
    testing::Values(Printed{{0x00, 0x00}, "0\n"}, Printed{{0x34, 0x12}, "4660\n"},
                    Printed{{0xFE, 0xFF}, "-2\n"}, Printed{{0xFF, 0x7F}, "32767\n"},
                    Printed{{0x00, 0x80}, "-32768\n"}, Printed{{0x80, 0x00}, "128\n"}));

INSTANTIATE_TEST_SUITE_P(Short, PrintedShort,
                         testing::Values(Printed{{}, "0\n"}, Printed{{0xFE}, "254\n"}));

INSTANTIATE_TEST_SUITE_P(TooLong, PrintedShort,
                         testing::Values(Printed{{0xFE, 0xFF, 0x01}, "-2\n"},
                                         Printed{{0x34, 0x12, 0xFF, 0xFF}, "4660\n"},
                                         Printed{{0x34, 0x12, 0xFF, 0xFF, 0xFF}, "4660\n"},
                                         Printed{bytes_of(4096, 0x11), "4369\n"}));

TEST_F(NumberQuery, numbers_of_a_stopped_query_take_nothing_from_the_buffer)
{
    for (const Ask ask : {stm_query_long, stm_query_short}) {
        begin_again();
        answer(1, FRAME_ECHO);
        answer(2, {0x21});
        type_line(1, "s\n");
        ask(poll, output);
        EXPECT_EQ(texts, Transcript({R"(say 0 "0\n")"}));
    }
}

TEST_F(NumberQuery, filler_goes_out_through_the_whole_transmit_buffer)
{
    reply_with({0x01, 0x00});
    watch = [](const spi_ioc_transfer &descriptor) {
        if (descriptor.len == 2 && stm_link.tx_buffer[0] != 0x00) {
            EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
        }
    };
    stm_query_short(poll, output);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
}

TEST_F(NumberQuery, filler_is_laid_out_even_for_no_bytes)
{
    reply_with({});
    stm_query_long(poll, output);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
}

TEST_F(NumberQuery, reply_lies_at_the_start_of_the_receive_buffer)
{
    reply_with({0x01, 0x02, 0x03, 0x04});
    stm_query_long(poll, output);
    EXPECT_EQ(bytes_in(stm_link.rx_buffer),
              chained({{0x01, 0x02, 0x03, 0x04, 0xE4, 0xE5, 0xE6, 0xE7},
                       bytes_of(40, 0x00),
                       bytes_of(4048, STALE_RX)}));
}

TEST_F(NumberQuery, result_of_the_output_changes_nothing)
{
    output_result = -1;
    reply_with({0x05, 0x00});
    stm_query_short(poll, output);
    EXPECT_TRUE(happened(joined({query(0x03, {}, 2), {R"(say 0 "5\n")"}})));
}
