// The fields of a live line: all of them if there is room, otherwise the most important ones.
#include "stmctl/output/live_fields.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

const LiveField FIELDS[] = {
    {3, "0:01"},
    {2, "120 records", "120 rec"},
    {1, "lost 7"},
    {4, "1.5 KiB"},
};

TEST(LiveFields, all_are_shown_in_their_order_if_they_fit)
{
    EXPECT_EQ(fitted_line(FIELDS, 34), "0:01  120 records  lost 7  1.5 KiB");
    EXPECT_EQ(fitted_line(FIELDS, 200), "0:01  120 records  lost 7  1.5 KiB");
}

TEST(LiveFields, are_abbreviated_before_one_is_left_out)
{
    EXPECT_EQ(fitted_line(FIELDS, 33), "0:01  120 rec  lost 7  1.5 KiB");
    EXPECT_EQ(fitted_line(FIELDS, 30), "0:01  120 rec  lost 7  1.5 KiB");
}

TEST(LiveFields, the_least_important_is_left_out_first)
{
    EXPECT_EQ(fitted_line(FIELDS, 29), "0:01  120 rec  lost 7");
    EXPECT_EQ(fitted_line(FIELDS, 20), "120 rec  lost 7");
    EXPECT_EQ(fitted_line(FIELDS, 14), "0:01  lost 7") << "a smaller one may have room";
    EXPECT_EQ(fitted_line(FIELDS, 11), "lost 7");
}

TEST(LiveFields, the_most_important_stays_for_the_terminal_to_cut)
{
    EXPECT_EQ(fitted_line(FIELDS, 3), "lost 7");
    EXPECT_EQ(fitted_line(FIELDS, 0), "lost 7");
}

TEST(LiveFields, sizes_are_shown_in_the_unit_that_fits)
{
    EXPECT_EQ(size_words(0), "0 B");
    EXPECT_EQ(size_words(1023), "1023 B");
    EXPECT_EQ(size_words(1024), "1.0 KiB");
    EXPECT_EQ(size_words(1536), "1.5 KiB");
    EXPECT_EQ(size_words(1048576), "1.0 MiB");
    EXPECT_EQ(size_words(5368709120), "5120.0 MiB");
}

} // namespace
