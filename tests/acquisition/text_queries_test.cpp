// Goal: a text is printed as it came, cut where the local buffer ends, with a line feed behind it.
#include "link/stm_com_funcs.h"
#include "tests/acquisition/acquisition_fixture.hpp"

namespace
{

struct TextQuery {
    uint8_t code;
    void (*ask)(StmPollFn, StmOutputFn);
};

class TextReply : public Acquisition, public testing::WithParamInterface<TextQuery>
{
  protected:
    void expect_printed(const Bytes &came, const std::string &text)
    {
        begin_again();
        reply_with(came);
        GetParam().ask(poll, output);
        EXPECT_TRUE(happened(joined({query(GetParam().code, {}, came.size()), {say(text)}})));
        EXPECT_TRUE(message_is_untouched());
    }
};

// A text of so many characters of which no two neighbours are alike.
Bytes letters(size_t count)
{
    Bytes text;
    for (size_t i = 0; i < count; ++i) {
        text.push_back(static_cast<uint8_t>('A' + i % 26));
    }
    return text;
}

std::string string_of(const Bytes &bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

Bytes bytes_of_text(const std::string &text)
{
    return Bytes(text.begin(), text.end());
}

} // namespace

TEST_P(TextReply, gets_a_line_feed)
{
    expect_printed(bytes_of_text("FW 2.1"), "FW 2.1\n");
    expect_printed({'x'}, "x\n");
}

TEST_P(TextReply, keeps_a_line_feed_of_its_own)
{
    expect_printed(bytes_of_text("one\ntwo\n"), "one\ntwo\n\n");
}

TEST_P(TextReply, without_bytes_is_the_line_feed_alone)
{
    expect_printed({}, "\n");
}

TEST_P(TextReply, is_no_format)
{
    expect_printed(bytes_of_text("100%s%n%d %%"), "100%s%n%d %%\n");
}

TEST_P(TextReply, may_hold_any_byte)
{
    expect_printed({0x80, 0xFF, 0x01, 0x7F}, "\x80\xFF\x01\x7F\n");
}

TEST_P(TextReply, ends_with_its_first_NUL_and_without_a_line_feed)
{
    expect_printed({'a', 'b', 0x00, 'c'}, "ab");
    expect_printed({0x00, 'c'}, "");
    expect_printed({'a', 0x00}, "a");
}

TEST_P(TextReply, of_up_to_126_bytes_is_whole)
{
    expect_printed(letters(125), string_of(letters(125)) + "\n");
    expect_printed(letters(126), string_of(letters(126)) + "\n");
}

TEST_P(TextReply, of_more_is_cut_to_126)
{
    for (const size_t length : std::initializer_list<size_t>{127, 128, 129, 255, 256, 4096}) {
        expect_printed(letters(length), string_of(letters(126)) + "\n");
    }
}

TEST_P(TextReply, of_a_stopped_query_is_empty)
{
    answer(1, FRAME_ECHO);
    answer(2, {'x'});
    type_line(1, "s\n");
    GetParam().ask(poll, output);
    EXPECT_TRUE(happened(
        joined({stopped_transaction(GetParam().code, {}), {"exchange 0:", R"(say 0 "\n")"}})));
}

INSTANTIATE_TEST_SUITE_P(Each, TextReply,
                         testing::Values(TextQuery{0x21, stm_query_text_21},
                                         TextQuery{0x22, stm_query_text_22}));
