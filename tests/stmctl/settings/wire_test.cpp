// Goal: a number that a query answers leads to the value of the setting with the same bits, and to
// no other.
#include "stmctl/settings/wire.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

constexpr Argument WORD = {"VALUE", 0, 0xFFFF, false};
constexpr Argument LONG = {"VALUE", 0, 0xFFFFFFFF, false};
constexpr Argument SKIP = {"SKIP", 3, 32000, false};

constexpr Answer BYTE_ANSWER = {"number, 0 to 255", 8, false};
constexpr Answer SHORT_ANSWER = {"signed number, 16 bits", 16, true};
constexpr Answer LONG_ANSWER = {"signed number, 32 bits", 32, true};

TEST(ValueOfBits, is_the_number_itself_or_without_its_sign)
{
    EXPECT_EQ(value_of_bits(WORD, 0), 0U);
    EXPECT_EQ(value_of_bits(WORD, 32767), 32767U);
    EXPECT_EQ(value_of_bits(WORD, 65535), 65535U);
    EXPECT_EQ(value_of_bits(WORD, -1), 65535U);
    EXPECT_EQ(value_of_bits(WORD, -32768), 32768U);
    EXPECT_EQ(value_of_bits(LONG, 65536), 65536U);
    EXPECT_EQ(value_of_bits(LONG, 4'294'967'295), 4'294'967'295U);
    EXPECT_EQ(value_of_bits(LONG, -1), 4'294'967'295U);
    EXPECT_EQ(value_of_bits(LONG, -2'147'483'648), 2'147'483'648U);
}

TEST(ValueOfBits, is_none_for_a_number_with_more_bits)
{
    EXPECT_EQ(value_of_bits(WORD, 65536), std::nullopt);
    EXPECT_EQ(value_of_bits(WORD, -32769), std::nullopt);
    EXPECT_EQ(value_of_bits(LONG, 4'294'967'296), std::nullopt);
    EXPECT_EQ(value_of_bits(LONG, -2'147'483'649), std::nullopt);
}

TEST(ValueOfBits, is_none_where_the_setting_does_not_take_it)
{
    EXPECT_EQ(value_of_bits(SKIP, 2), std::nullopt);
    EXPECT_EQ(value_of_bits(SKIP, 3), 3U);
    EXPECT_EQ(value_of_bits(SKIP, 32000), 32000U);
    EXPECT_EQ(value_of_bits(SKIP, 32001), std::nullopt);
    EXPECT_EQ(value_of_bits(SKIP, -1), std::nullopt);
    EXPECT_EQ(value_of_bits({"VALUE", 0, 0x10000, false}, 0x10000), 0x10000U) << "of 17 bits";
}

TEST(AskedBack, is_signed_from_half_of_the_range_on_if_the_answer_is)
{
    EXPECT_EQ(asked_back(SHORT_ANSWER, 32767), 32767);
    EXPECT_EQ(asked_back(SHORT_ANSWER, 32768), -32768);
    EXPECT_EQ(asked_back(SHORT_ANSWER, 65535), -1);
    EXPECT_EQ(asked_back(LONG_ANSWER, 0x7FFFFFFF), 0x7FFFFFFF);
    EXPECT_EQ(asked_back(LONG_ANSWER, 0x80000000), -2'147'483'648);
    EXPECT_EQ(asked_back(BYTE_ANSWER, 255), 255);
}

TEST(AskedBack, lacks_the_bits_that_the_answer_has_not)
{
    EXPECT_EQ(asked_back(BYTE_ANSWER, 256), 0);
    EXPECT_EQ(asked_back(BYTE_ANSWER, 32000), 0);
    EXPECT_EQ(asked_back(BYTE_ANSWER, 300), 44);
    EXPECT_EQ(asked_back(SHORT_ANSWER, 65537), 1);
}

TEST(AnswersValue, compares_the_bits_that_both_have)
{
    EXPECT_TRUE(answers_value(WORD, SHORT_ANSWER, 65535, -1));
    EXPECT_TRUE(answers_value(WORD, LONG_ANSWER, 65535, -1)) << "16 bits of 32";
    EXPECT_TRUE(answers_value(SKIP, BYTE_ANSWER, 300, 44));
    EXPECT_FALSE(answers_value(SKIP, BYTE_ANSWER, 300, 45));
    EXPECT_FALSE(answers_value(WORD, SHORT_ANSWER, 32768, 0)) << "the highest bit";
    EXPECT_FALSE(answers_value(LONG, LONG_ANSWER, 0x80000000, 0));
    EXPECT_TRUE(answers_value(LONG, LONG_ANSWER, 0x80000000, -2'147'483'648));
    EXPECT_TRUE(answers_value(LONG, SHORT_ANSWER, 65537, 1));
}

TEST(AskedBack, as_another_number_is_explained)
{
    EXPECT_EQ(why_asked_back_otherwise(SHORT_ANSWER, 32767), "");
    EXPECT_EQ(why_asked_back_otherwise(SHORT_ANSWER, 40000),
              "40000 reads back as -25536: the answer is a signed 16-bit number");
    EXPECT_EQ(why_asked_back_otherwise(BYTE_ANSWER, 255), "");
    EXPECT_EQ(why_asked_back_otherwise(BYTE_ANSWER, 300),
              "300 reads back as 44: the answer is an unsigned 8-bit number");
}

} // namespace
