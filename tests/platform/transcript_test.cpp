// Goal: what a transcript shows can be trusted, above all that two that differ are told apart.
#include "tests/platform/bitwise_crc.hpp"
#include "tests/platform/transcript.hpp"

TEST(TranscriptText, bytes_are_two_hexadecimal_digits_each)
{
    EXPECT_EQ(hex({}), "");
    EXPECT_EQ(hex({0x00, 0x0A, 0xFF}), "00 0A FF");
}

TEST(TranscriptText, four_equal_bytes_are_a_run_and_three_are_not)
{
    EXPECT_EQ(hex({0x81, 0, 0, 0, 0xAA}), "81 00 00 00 AA");
    EXPECT_EQ(hex({0x81, 0, 0, 0, 0, 0xAA}), "81 00*4 AA");
    EXPECT_EQ(hex(Bytes(4096, 0x66)), "66*4096");
}

TEST(TranscriptText, texts_are_escaped)
{
    EXPECT_EQ(quoted("SPI timeout\n"), "\"SPI timeout\\n\"");
    EXPECT_EQ(quoted("a\t\"b\"\\"), "\"a\\t\\\"b\\\"\\\\\"");
    EXPECT_EQ(quoted("\x7F\xFE"), "\"\\x7F\\xFE\"");
}

TEST(TranscriptText, an_exchange_shows_its_length_even_when_it_is_0)
{
    EXPECT_EQ(exchange({0x33}), "exchange 1: 33");
    EXPECT_EQ(exchange({}), "exchange 0:");
    EXPECT_EQ(short_exchange({0x44}), "short exchange 1: 44");
}

TEST(TranscriptText, a_said_text_shows_its_flag)
{
    EXPECT_EQ(say("2\n"), "say 0 \"2\\n\"");
    EXPECT_EQ(say("2\n", 1), "say 1 \"2\\n\"");
}

TEST(TranscriptText, parts_are_repeated_and_joined_in_order)
{
    EXPECT_EQ(joined({{"a"}, times(2, {"b", "c"}), {}}), Transcript({"a", "b", "c", "b", "c"}));
}

TEST(TranscriptComparison, equal_transcripts_are_the_same)
{
    EXPECT_TRUE(same({}, {}));
    EXPECT_TRUE(same({"poll", "close 7"}, {"poll", "close 7"}));
}

TEST(TranscriptComparison, the_first_difference_is_shown)
{
    const testing::AssertionResult result = same({"poll", "close 7"}, {"poll", "exit 1"});
    EXPECT_FALSE(result);
    EXPECT_STREQ(result.message(), "the dialogue differs from line 2 on\n"
                                   "      both: poll\n"
                                   "  expected: exit 1\n"
                                   "    actual: close 7\n"
                                   "2 lines expected, 2 happened");
}

TEST(TranscriptComparison, a_missing_and_a_superfluous_line_are_differences)
{
    EXPECT_FALSE(same({"poll"}, {"poll", "poll"}));
    EXPECT_FALSE(same({"poll", "poll"}, {"poll"}));
}

TEST(TranscriptComparison, another_order_is_a_difference)
{
    EXPECT_FALSE(same({"poll", "close 7"}, {"close 7", "poll"}));
}

// The published values of CRC-16/GENIBUS and of CRC-16/CCITT-FALSE, its form without inversion.
TEST(BitwiseCrc, has_the_published_check_value)
{
    const Bytes digits = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(bitwise_crc(digits), 0xD64E);
    EXPECT_EQ(bitwise_crc(digits) ^ 0xFFFF, 0x29B1);
}
