// Goal: a text grows as far as its memory goes and not a byte further, and always has its end.
#include "readout/text_buffer.hpp"

#include "link/link.hpp"
#include "tests/platform/dialogue.hpp"

#include <climits>
#include <cstring>

using namespace stm;

namespace
{

// Memory for seven characters and the NUL, between bytes that no text may touch.
struct Guarded {
    char before[4];
    char memory[8];
    char behind[4];
};

class Text : public testing::Test
{
  protected:
    void TearDown() override
    {
        EXPECT_EQ(std::string(guarded.before, 4), "####");
        EXPECT_EQ(std::string(guarded.behind, 4), "####");
        EXPECT_EQ(text.text, guarded.memory);
        EXPECT_EQ(text.size, 8);
        EXPECT_EQ(text.length, static_cast<int32_t>(strnlen(guarded.memory, 8)));
    }

    Guarded guarded = {
        {'#', '#', '#', '#'}, {'o', 'l', 'd', '.', '.', '.', '.', '.'}, {'#', '#', '#', '#'}};
    TextBuffer text = text_in(guarded.memory);
};

class TextInMessage : public Dialogue
{
};

class Numbers : public testing::Test
{
  protected:
    char memory[64] = {};
    TextBuffer text = text_in(memory);
};

} // namespace

TEST_F(Text, begins_empty_whatever_the_memory_held)
{
    EXPECT_STREQ(text.text, "");
}

TEST_F(Text, grows_behind_what_it_holds)
{
    text_append(text, "ab");
    text_append(text, "");
    text_format(text, "%d%c", 12, 'x');
    text_append(text, "y");
    EXPECT_STREQ(text.text, "ab12xy");
}

TEST_F(Text, of_seven_characters_fits_exactly)
{
    text_append(text, "1234567");
    EXPECT_STREQ(text.text, "1234567");
}

TEST_F(Text, of_eight_characters_loses_the_last)
{
    text_append(text, "12345678");
    EXPECT_STREQ(text.text, "1234567");
}

TEST_F(Text, takes_of_an_addition_what_fits)
{
    text_append(text, "12345");
    text_append(text, "abc");
    EXPECT_STREQ(text.text, "12345ab");
}

TEST_F(Text, may_be_filled_by_its_last_addition)
{
    text_append(text, "12345");
    text_append(text, "ab");
    EXPECT_STREQ(text.text, "12345ab");
}

TEST_F(Text, takes_nothing_more_when_it_is_full)
{
    constexpr uint8_t BYTE = 0x12;
    text_append(text, "1234567");
    text_append(text, "a");
    text_format(text, "%d", 8);
    text_append_signed(text, -1);
    text_append_unsigned(text, 1);
    text_append_hex(text, &BYTE, 1);
    EXPECT_STREQ(text.text, "1234567");
}

TEST_F(Text, formatted_with_seven_characters_fits_exactly)
{
    text_format(text, "%s", "1234567");
    EXPECT_STREQ(text.text, "1234567");
}

TEST_F(Text, formatted_with_eight_characters_loses_the_last)
{
    text_format(text, "%s", "12345678");
    EXPECT_STREQ(text.text, "1234567");
}

TEST_F(Text, formatted_far_beyond_its_memory_can_still_be_added_to_in_vain)
{
    text_append(text, "ab");
    text_format(text, "%0200d", 7);
    text_append(text, "z");
    EXPECT_STREQ(text.text, "ab00000");
}

TEST_F(Text, formatted_behind_others_fits_exactly_or_loses_the_last)
{
    text_append(text, "abc");
    text_format(text, "%04d", 12);
    EXPECT_STREQ(text.text, "abc0012");
    text_clear(text);
    text_append(text, "abc");
    text_format(text, "%05d", 12);
    EXPECT_STREQ(text.text, "abc0001");
}

TEST_F(Text, added_is_no_format)
{
    text_append(text, "%s%n%%");
    EXPECT_STREQ(text.text, "%s%n%%");
}

TEST_F(Text, cleared_grows_from_the_start_again)
{
    text_append(text, "1234567");
    text_clear(text);
    EXPECT_STREQ(text.text, "");
    EXPECT_EQ(text.length, 0);
    text_append(text, "ab");
    EXPECT_STREQ(text.text, "ab");
}

TEST_F(Text, in_hex_is_cut_within_a_byte)
{
    const uint8_t bytes[] = {0xAB, 0xCD};
    text_append_hex(text, bytes, 2);
    EXPECT_STREQ(text.text, "0xAB 0x");
}

TEST_F(Text, with_numbers_is_cut_within_a_number)
{
    text_append_signed(text, INT_MIN);
    EXPECT_STREQ(text.text, "-214748");
    text_clear(text);
    text_append_unsigned(text, UINT_MAX);
    EXPECT_STREQ(text.text, "4294967");
}

TEST(TextOfOneByte, is_always_empty)
{
    char memory[1] = {'x'};
    TextBuffer text = text_in(memory);
    text_append(text, "a");
    text_format(text, "%d", 1);
    EXPECT_STREQ(text.text, "");
    EXPECT_EQ(text.length, 0);
}

TEST_F(Numbers, are_decimal_up_to_their_extremes)
{
    text_append_signed(text, 0);
    text_append_signed(text, -1);
    text_append_signed(text, INT_MAX);
    text_append_signed(text, INT_MIN);
    EXPECT_STREQ(memory, "0-12147483647-2147483648");
    text_clear(text);
    text_append_unsigned(text, 0);
    text_append_unsigned(text, 2147483648);
    text_append_unsigned(text, UINT_MAX);
    EXPECT_STREQ(memory, "021474836484294967295");
}

TEST_F(Numbers, in_hex_are_two_upper_case_digits_with_a_blank_behind_them)
{
    const uint8_t bytes[] = {0x00, 0x01, 0x0F, 0x10, 0x9A, 0xBC, 0xDE, 0xF0, 0xFF};
    text_append_hex(text, bytes, 9);
    EXPECT_STREQ(memory, "0x00 0x01 0x0F 0x10 0x9A 0xBC 0xDE 0xF0 0xFF ");
}

TEST_F(Numbers, in_hex_are_as_many_as_are_counted)
{
    const uint8_t bytes[] = {0x12, 0x34, 0x56};
    text_append_hex(text, bytes, 0);
    EXPECT_STREQ(memory, "");
    text_append_hex(text, bytes, 1);
    text_append_hex(text, bytes + 1, 1);
    EXPECT_STREQ(memory, "0x12 0x34 ");
}

TEST_F(Numbers, in_hex_may_be_any_byte)
{
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<uint8_t>(value);
        text_clear(text);
        text_append_hex(text, &byte, 1);
        EXPECT_EQ(memory, "0x" + hex({byte}) + " ");
    }
}

TEST_F(TextInMessage, empties_the_message)
{
    strcpy(stm_link.message, "the last report");
    TextBuffer text = text_in_message();
    EXPECT_EQ(text.text, stm_link.message);
    EXPECT_EQ(text.length, 0);
    EXPECT_STREQ(stm_link.message, "");
}

TEST_F(TextInMessage, has_room_for_254_characters)
{
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    TextBuffer text = text_in_message();
    text_append(text, std::string(300, 'm').c_str());
    EXPECT_EQ(stm_link.message, std::string(254, 'm'));
    text = text_in_message();
    text_format(text, "%300d", 1);
    EXPECT_EQ(stm_link.message, std::string(254, ' '));
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
}

TEST_F(TextInMessage, can_go_on_behind_what_the_message_holds)
{
    strcpy(stm_link.message, "the last report");
    TextBuffer text = text_behind_message();
    EXPECT_EQ(text.length, 15);
    EXPECT_STREQ(stm_link.message, "the last report");
    text_append(text, " and more");
    EXPECT_STREQ(stm_link.message, "the last report and more");
}

TEST_F(TextInMessage, goes_on_from_the_start_of_an_empty_message)
{
    TextBuffer text = text_behind_message();
    text_append(text, "first");
    EXPECT_STREQ(stm_link.message, "first");
}

TEST_F(TextInMessage, goes_on_up_to_254_characters)
{
    memset(stm_link.tx_short, 0x11, sizeof(stm_link.tx_short));
    for (const size_t held : {size_t{0}, size_t{252}, size_t{253}, size_t{254}}) {
        memset(stm_link.message, 'm', sizeof(stm_link.message));
        stm_link.message[held] = '\0';
        TextBuffer text = text_behind_message();
        text_append(text, std::string(300, 'x').c_str());
        EXPECT_EQ(stm_link.message, std::string(held, 'm') + std::string(254 - held, 'x'));
        EXPECT_EQ(text.length, 254);
    }
    EXPECT_EQ(bytes_in(stm_link.tx_short), bytes_of(13, 0x11));
}

TEST_F(TextInMessage, gives_a_message_without_an_end_its_end)
{
    memset(stm_link.message, 'm', sizeof(stm_link.message));
    TextBuffer text = text_behind_message();
    EXPECT_EQ(text.length, 254);
    text_append(text, "x");
    EXPECT_EQ(stm_link.message[254], '\0');
    EXPECT_EQ(stm_link.message, std::string(254, 'm'));
}
