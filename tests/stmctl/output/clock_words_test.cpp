// Goal: times on a terminal have hours where they need them, and never more than two digits of them.
#include "stmctl/output/terminal.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace stmctl;

namespace
{

TEST(ClockWords, have_hours_only_where_there_are_any)
{
    EXPECT_EQ(clock_words(0), "0:00");
    EXPECT_EQ(clock_words(7), "0:07");
    EXPECT_EQ(clock_words(59.4), "0:59");
    EXPECT_EQ(clock_words(59.5), "1:00") << "rounded to whole seconds";
    EXPECT_EQ(clock_words(3599), "59:59");
    EXPECT_EQ(clock_words(3600), "1:00:00");
    EXPECT_EQ(clock_words(3723), "1:02:03");
    EXPECT_EQ(clock_words(86400), "24:00:00");
}

// The time left is estimated by a division, and may come out as anything.
TEST(ClockWords, stay_between_nothing_and_a_hundred_hours)
{
    EXPECT_EQ(clock_words(-1), "0:00");
    EXPECT_EQ(clock_words(359999), "99:59:59");
    EXPECT_EQ(clock_words(360000), "99:59:59");
    EXPECT_EQ(clock_words(std::numeric_limits<double>::infinity()), "99:59:59");
}

} // namespace
