// Goal: a time is that of its unit, never none, and what is no time is refused.
#include "stmctl/command_line/durations.hpp"
#include "stmctl/process/failure.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

using std::chrono::milliseconds;

milliseconds parsed(const std::string &text)
{
    return parse_duration(text, "--time");
}

TEST(Duration, is_in_seconds_or_in_its_unit)
{
    EXPECT_EQ(parsed("90"), milliseconds(90'000));
    EXPECT_EQ(parsed("90s"), milliseconds(90'000));
    EXPECT_EQ(parsed("5m"), milliseconds(300'000));
    EXPECT_EQ(parsed("1.5h"), milliseconds(5'400'000));
    EXPECT_EQ(parsed("500ms"), milliseconds(500));
}

TEST(Duration, of_parts_of_a_millisecond_is_the_next_whole_one)
{
    EXPECT_EQ(parsed("1.1ms"), milliseconds(2));
    EXPECT_EQ(parsed("0.0001"), milliseconds(1));
    EXPECT_EQ(parsed("0.0000001ms"), milliseconds(1)) << "and never none";
    EXPECT_EQ(parsed("1.0000001ms"), milliseconds(1)) << "as a binary fraction may have it";
    EXPECT_EQ(parsed("0.29"), milliseconds(290));
}

TEST(Duration, has_a_limit)
{
    EXPECT_EQ(parsed("1000000000"), milliseconds(1'000'000'000'000));
    for (const char *text : {"1000000000.001", "0", "-1", "", "s", "1x"}) {
        try {
            parsed(text);
            ADD_FAILURE() << text;
        } catch (const Failure &failure) {
            EXPECT_EQ(failure.status(), ExitStatus::usage);
            EXPECT_EQ(failure.what(), "--time must be a time such as 90, 90s, 5m, 1.5h or 500ms, "
                                      "above 0 and at most 1000000000 s, not '" +
                                          std::string(text) + "'");
        }
    }
}

} // namespace
