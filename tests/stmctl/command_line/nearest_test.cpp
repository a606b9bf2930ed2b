// Goal: finds the name that was probably meant, and none for a word that resembles no other.
#include "stmctl/command_line/nearest.hpp"

#include <gtest/gtest.h>

#include <vector>

using namespace stmctl;

namespace
{

using Names = std::vector<std::string>;

TEST(TypingDistance, counts_letters_more_fewer_others_and_swapped)
{
    EXPECT_EQ(typing_distance("flash", "flash"), 0U);
    EXPECT_EQ(typing_distance("flahs", "flash"), 1U);
    EXPECT_EQ(typing_distance("lfash", "flash"), 1U);
    EXPECT_EQ(typing_distance("flsh", "flash"), 1U);
    EXPECT_EQ(typing_distance("fllash", "flash"), 1U);
    EXPECT_EQ(typing_distance("flush", "flash"), 1U);
    EXPECT_EQ(typing_distance("lfahs", "flash"), 2U);
    EXPECT_EQ(typing_distance("", "flash"), 5U);
    EXPECT_EQ(typing_distance("flash", ""), 5U);
    EXPECT_EQ(typing_distance("ca", "abc"), 3U) << "nothing comes between swapped letters";
}

TEST(Suggestion, is_the_nearest_and_the_first_of_equals)
{
    EXPECT_EQ(suggestion("stats", Names{"status", "state", "stop"}), "; did you mean status?");
    EXPECT_EQ(suggestion("statte", Names{"status", "state"}), "; did you mean state?");
}

TEST(Suggestion, has_at_most_two_errors_and_in_fewer_than_half_of_the_letters)
{
    EXPECT_EQ(suggestion("recrods", Names{"records"}), "; did you mean records?");
    EXPECT_EQ(suggestion("recrod", Names{"records"}), "; did you mean records?");
    EXPECT_EQ(suggestion("jsno", Names{"json"}, "--"), "; did you mean --json?");
    EXPECT_EQ(suggestion("reord", Names{"record"}), "; did you mean record?");
    EXPECT_EQ(suggestion("rrd", Names{"record"}), "");
    EXPECT_EQ(suggestion("cordss", Names{"records"}), "");
    EXPECT_EQ(suggestion("gte", Names{"get"}), "; did you mean get?");
    EXPECT_EQ(suggestion("ge", Names{"get"}), "");
    EXPECT_EQ(suggestion("abcd", Names{"abxy"}), "");
    EXPECT_EQ(suggestion("abcde", Names{"abcxy"}), "; did you mean abcxy?");
    EXPECT_EQ(suggestion("", Names{"a"}), "");
    EXPECT_EQ(suggestion(std::string(1000, 'x'), Names{std::string(1000, 'x')}), "");
}

TEST(Reference, begins_a_sentence_of_its_own_after_a_question)
{
    EXPECT_EQ(with_reference("no command given", "stmctl --help"),
              "no command given; see stmctl --help");
    EXPECT_EQ(with_reference("no flahs; did you mean flash?", "stmctl --help"),
              "no flahs; did you mean flash? See stmctl --help");
}

} // namespace
