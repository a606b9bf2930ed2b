// Goal: a text is read from one address byte by byte, up to its 0 or to 50 bytes, and printed in
// pieces of which only the closing line feed is the last.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

#include <cerrno>

namespace
{

class PrintedText : public Acquisition
{
  protected:
    void script(const std::string &bytes)
    {
        for (const char byte : bytes) {
            reply_with({static_cast<uint8_t>(byte)});
        }
    }

    static int32_t print() { return stm_print_text_at(0xBEEF, poll, output); }
};

const Transcript READ = query(0x62, {0xEF, 0xBE}, 1);

// Each byte of a text as a piece of its own.
Transcript pieces(const std::string &bytes)
{
    Transcript all;
    for (const char byte : bytes) {
        all = joined({all, READ, {say(std::string(1, byte), 1)}});
    }
    return all;
}

const Transcript END = {R"(say 1 "")", R"(say 0 "\n")"};

std::string letters(size_t count)
{
    return std::string("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ").substr(0, count);
}

} // namespace

TEST_F(PrintedText, ends_with_its_0_as_an_empty_piece)
{
    script({'o', 'k', '\0', 'x'});
    EXPECT_EQ(print(), 3);
    EXPECT_TRUE(happened(joined(
        {READ, {R"(say 1 "o")"}, READ, {R"(say 1 "k")"}, READ, {R"(say 1 "")", R"(say 0 "\n")"}})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(PrintedText, of_a_0_alone_is_an_empty_line)
{
    script({'\0', 'x'});
    EXPECT_EQ(print(), 1);
    EXPECT_TRUE(happened(joined({READ, END})));
}

TEST_F(PrintedText, of_49_bytes_has_its_0_read_as_the_50th)
{
    script(letters(49) + '\0' + "x");
    EXPECT_EQ(print(), 50);
    EXPECT_TRUE(happened(joined({pieces(letters(49)), READ, END})));
}

TEST_F(PrintedText, of_48_bytes_has_its_0_read_as_the_49th)
{
    script(letters(48) + '\0' + "x");
    EXPECT_EQ(print(), 49);
    EXPECT_TRUE(happened(joined({pieces(letters(48)), READ, END})));
}

TEST_F(PrintedText, without_a_0_stops_after_50_reads)
{
    script(letters(52));
    EXPECT_EQ(print(), 50);
    EXPECT_TRUE(happened(joined({pieces(letters(50)), {R"(say 0 "\n")"}})));
}

TEST_F(PrintedText, may_hold_any_other_byte)
{
    script({'%', '\n', '\x80', '\xFF', '\0'});
    EXPECT_EQ(print(), 5);
    EXPECT_TRUE(happened(joined({pieces("%\n\x80\xFF"), READ, END})));
}

TEST_F(PrintedText, at_an_address_asks_for_that_address_each_time)
{
    script({'a', '\0'});
    EXPECT_EQ(stm_print_text_at(0x00FF, poll, output), 2);
    EXPECT_TRUE(happened(joined(
        {query(0x62, {0xFF, 0x00}, 1), {R"(say 1 "a")"}, query(0x62, {0xFF, 0x00}, 1), END})));
}

TEST_F(PrintedText, takes_a_longer_reply_for_its_first_byte)
{
    reply_with({'a', 'b'});
    reply_with({'\0', 'c'});
    EXPECT_EQ(print(), 2);
    EXPECT_EQ(texts, Transcript({R"(say 1 "a")", R"(say 1 "")", R"(say 0 "\n")"}));
}

TEST_F(PrintedText, ends_with_an_empty_reply_whose_byte_is_that_of_its_length)
{
    reply_with({'a'});
    reply_with({});
    EXPECT_EQ(print(), 2);
    EXPECT_TRUE(happened(joined({pieces("a"), transaction(0x62, {0xEF, 0xBE}), reply(0), END})));
}

TEST_F(PrintedText, goes_on_after_the_operators_stop_with_the_byte_of_that_poll)
{
    answer(2, {'!'});
    type_line(1, "s\n");
    answer(5, {0x55});
    answer(6, {0x01, 0x00});
    EXPECT_EQ(print(), 2);
    EXPECT_TRUE(happened(
        joined({stopped_transaction(0x62, {0xEF, 0xBE}), reply(0), {R"(say 1 "!")"}, READ, END})));
}

TEST_F(PrintedText, of_which_the_first_byte_fails_is_nothing)
{
    output_result = 5;
    fail_reply(1, EIO);
    EXPECT_EQ(print(), -1);
    EXPECT_TRUE(happened(joined({READ, {R"(perror "SPI datatransfer" EIO)"}})));
}

TEST_F(PrintedText, of_which_a_later_byte_fails_has_no_closing_line)
{
    script("ok");
    fail_reply(1, EIO);
    EXPECT_EQ(print(), -1);
    EXPECT_TRUE(happened(joined({pieces("ok"), READ, {R"(perror "SPI datatransfer" EIO)"}})));
    EXPECT_TRUE(message_is_untouched());
}

TEST_F(PrintedText, of_which_the_50th_byte_fails_has_no_closing_line)
{
    script(letters(49));
    fail_reply(1, EIO);
    EXPECT_EQ(print(), -1);
    EXPECT_TRUE(
        happened(joined({pieces(letters(49)), READ, {R"(perror "SPI datatransfer" EIO)"}})));
}

TEST_F(PrintedText, ends_with_a_failing_transaction_too)
{
    script("o");
    fail_frame(EIO);
    EXPECT_EQ(print(), -1);
    EXPECT_TRUE(happened(joined({pieces("o"), failed_transaction(1, 0x62, {0xEF, 0xBE})})));
}

TEST_F(PrintedText, ends_with_a_reply_that_is_too_long)
{
    script("o");
    announce(4097, {'k'});
    EXPECT_EQ(print(), -1);
    EXPECT_TRUE(happened(joined({pieces("o"),
                                 transaction(0x62, {0xEF, 0xBE}),
                                 {R"(perror "SPI datatransfer" EMSGSIZE)"}})));
}
