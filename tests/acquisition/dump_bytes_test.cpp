// Goal: a dump prints as many bytes as its caller wants, whatever came, and returns what came.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

#include <cerrno>

namespace
{

class Dump : public Acquisition
{
  protected:
    static int32_t dump(uint16_t count) { return stm_dump_bytes(0xBEEF, count, poll, output); }
};

// Equal bytes in a dump: all but the last, or with the last.
Transcript pieces(int count, const std::string &byte)
{
    return times(count, {say(byte + ";", 1)});
}

Transcript line(int count, const std::string &byte)
{
    return joined({pieces(count - 1, byte), {say(byte + "\n", 0)}});
}

} // namespace

TEST_F(Dump, of_one_byte_is_a_line_without_pieces)
{
    reply_with({0x0A});
    EXPECT_EQ(dump(1), 1);
    EXPECT_TRUE(happened(joined({query(0x75, {0xEF, 0xBE, 0x01, 0x00}, 1), {R"(say 0 "0xA\n")"}})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(Dump, ends_its_line_with_the_last_byte)
{
    output_result = 12;
    reply_with({0x01, 0xAB, 0x10});
    EXPECT_EQ(dump(3), 3);
    EXPECT_TRUE(happened(joined({query(0x75, {0xEF, 0xBE, 0x03, 0x00}, 3),
                                 {R"(say 1 "0x1;")", R"(say 1 "0xAB;")", R"(say 0 "0x10\n")"}})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(Dump, of_the_smallest_and_largest_bytes_needs_no_zeros_in_front)
{
    reply_with({0x00, 0xFF, 0x0F});
    EXPECT_EQ(dump(3), 3);
    EXPECT_EQ(texts, Transcript({R"(say 1 "0x0;")", R"(say 1 "0xFF;")", R"(say 0 "0xF\n")"}));
}

TEST_F(Dump, of_no_bytes_prints_nothing_but_fetches_the_reply)
{
    reply_with({0x01, 0x02});
    EXPECT_EQ(dump(0), 2);
    EXPECT_TRUE(happened(query(0x75, {0xEF, 0xBE, 0x00, 0x00}, 2)));
}

TEST_F(Dump, prints_fewer_bytes_than_came)
{
    reply_with({0x01, 0x02, 0x03, 0x04});
    EXPECT_EQ(dump(2), 4);
    EXPECT_TRUE(happened(joined(
        {query(0x75, {0xEF, 0xBE, 0x02, 0x00}, 4), {R"(say 1 "0x1;")", R"(say 0 "0x2\n")"}})));
}

// The reply, the rest of what came in with the frame, what the command cleared, and what lay there
// long before.
TEST_F(Dump, prints_what_the_buffer_holds_behind_the_reply)
{
    reply_with({0x01, 0x02});
    EXPECT_EQ(dump(50), 2);
    EXPECT_TRUE(happened(
        joined({query(0x75, {0xEF, 0xBE, 50, 0x00}, 2),
                {R"(say 1 "0x1;")", R"(say 1 "0x2;")", R"(say 1 "0xE2;")", R"(say 1 "0xE3;")",
                 R"(say 1 "0xE4;")", R"(say 1 "0xE5;")", R"(say 1 "0xE6;")", R"(say 1 "0xE7;")"},
                pieces(40, "0x0"),
                line(2, "0xA5")})));
}

TEST_F(Dump, of_an_empty_reply_prints_what_the_buffer_holds)
{
    reply_with({});
    EXPECT_EQ(dump(4), 0);
    EXPECT_TRUE(happened(
        joined({query(0x75, {0xEF, 0xBE, 0x04, 0x00}, 0),
                {R"(say 1 "0x0;")", R"(say 1 "0x0;")", R"(say 1 "0xE2;")", R"(say 0 "0xE3\n")"}})));
}

TEST_F(Dump, that_is_stopped_prints_what_the_buffer_holds)
{
    answer(1, FRAME_ECHO);
    answer(2, {0x21});
    type_line(1, "s\n");
    EXPECT_EQ(dump(3), 0);
    EXPECT_TRUE(happened(joined({stopped_transaction(0x75, {0xEF, 0xBE, 0x03, 0x00}),
                                 reply(0),
                                 {R"(say 1 "0x21;")", R"(say 1 "0xE1;")", R"(say 0 "0xE2\n")"}})));
}

TEST_F(Dump, asks_for_address_and_count_low_bytes_first)
{
    reply_with(bytes_of(0x0102, 0x11));
    EXPECT_EQ(stm_dump_bytes(0x1234, 0x0102, poll, output), 0x0102);
    EXPECT_TRUE(
        happened(joined({query(0x75, {0x34, 0x12, 0x02, 0x01}, 0x0102), line(0x0102, "0x11")})));
}

TEST_F(Dump, of_4096_bytes_is_whole)
{
    reply_with(chained({bytes_of(4095, 0x11), {0x22}}));
    EXPECT_EQ(dump(4096), 4096);
    EXPECT_TRUE(happened(joined({query(0x75, {0xEF, 0xBE, 0x00, 0x10}, 4096),
                                 pieces(4095, "0x11"),
                                 {R"(say 0 "0x22\n")"}})));
}

TEST_F(Dump, of_4095_bytes_ends_with_the_4095th)
{
    reply_with(chained({bytes_of(4094, 0x11), {0x22}}));
    EXPECT_EQ(dump(4095), 4095);
    EXPECT_TRUE(happened(joined({query(0x75, {0xEF, 0xBE, 0xFF, 0x0F}, 4095),
                                 pieces(4094, "0x11"),
                                 {R"(say 0 "0x22\n")"}})));
}

TEST_F(Dump, of_more_ends_its_line_with_the_4096th_byte)
{
    for (const uint16_t count : std::initializer_list<uint16_t>{4097, 32768, 65535}) {
        begin_again();
        reply_with(chained({bytes_of(4095, 0x11), {0x22}}));
        EXPECT_EQ(dump(count), 4096);
        EXPECT_TRUE(happened(joined(
            {query(0x75,
                   {0xEF, 0xBE, static_cast<uint8_t>(count), static_cast<uint8_t>(count >> 8)},
                   4096),
             pieces(4095, "0x11"),
             {R"(say 0 "0x22\n")"}})));
    }
}

TEST_F(Dump, without_a_reply_is_minus_1)
{
    fail_reply(3, EIO);
    EXPECT_EQ(dump(3), -1);
    EXPECT_TRUE(happened(
        joined({query(0x75, {0xEF, 0xBE, 0x03, 0x00}, 3), {R"(perror "SPI datatransfer" EIO)"}})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(Dump, without_a_transaction_is_minus_1)
{
    for (const int failing : {1, 2, 3}) {
        begin_again();
        reply_with({0x01, 0x02, 0x03});
        fail_exchange(failing, EIO);
        EXPECT_EQ(dump(3), -1);
        EXPECT_TRUE(happened(failed_transaction(failing, 0x75, {0xEF, 0xBE, 0x03, 0x00})));
    }
}

TEST_F(Dump, of_a_reply_that_is_too_long_is_minus_1)
{
    for (const uint16_t length : std::initializer_list<uint16_t>{4097, 65535}) {
        begin_again();
        announce(length, bytes_of(4096, 0x11));
        EXPECT_EQ(dump(3), -1);
        EXPECT_TRUE(happened(joined({transaction(0x75, {0xEF, 0xBE, 0x03, 0x00}),
                                     {R"(perror "SPI datatransfer" EMSGSIZE)"}})));
    }
}
