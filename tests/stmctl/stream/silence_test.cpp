// Goal: when a pause is a silence, and when it is time to ask again, on both sides of each limit.
#include "stmctl/stream/silence.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

using std::chrono::milliseconds;

// Silences at times that the test sets: milliseconds since the start.
class SilenceAt : public testing::Test
{
  protected:
    static Silence::Time at(int64_t ms)
    {
        return Silence::Time(std::chrono::hours(1)) + milliseconds(ms);
    }

    static Silence patient(std::optional<milliseconds> given = {})
    {
        return {given, milliseconds(10'000), at(0)};
    }

    static Silence going_on(std::optional<milliseconds> given = {})
    {
        return {given, milliseconds(2'000), at(0)};
    }

    // Records of one second: those after the first are counted.
    static void come_for_a_second(Silence &silence, uint64_t records)
    {
        silence.came(1, at(0));
        silence.came(records, at(1'000));
    }

    static void time_out(Silence &silence, int times)
    {
        for (int i = 0; i < times; ++i) {
            silence.timed_out();
        }
    }

    static std::optional<int64_t> ended(std::optional<milliseconds> length)
    {
        return length ? std::optional<int64_t>(length->count()) : std::nullopt;
    }
};

using Limit = std::optional<int64_t>;

TEST_F(SilenceAt, four_a_second_are_slow_and_five_are_quick)
{
    for (const uint64_t records : {4, 5}) {
        Silence silence = going_on();
        come_for_a_second(silence, records);
        time_out(silence, 2);
        EXPECT_EQ(silence.is_time_to_ask(at(2'100)), records == 5) << records;
        EXPECT_EQ(silence.is_silence(at(2'100)), records == 5) << records;
        EXPECT_EQ(silence.is_worth_a_word(), records == 5) << records;
    }
}

TEST_F(SilenceAt, the_first_records_do_not_make_a_rate)
{
    Silence silence = going_on();
    silence.came(85, at(100));
    time_out(silence, 3);
    EXPECT_FALSE(silence.is_time_to_ask(at(1'800))) << "no time has passed between two of them";
    EXPECT_TRUE(silence.is_worth_a_word()) << "the rate is not known";
    silence.came(4, at(1'100));
    time_out(silence, 2);
    EXPECT_FALSE(silence.is_time_to_ask(at(2'200)));
}

TEST_F(SilenceAt, a_quick_stream_is_asked_after_two_time_outs)
{
    Silence silence = going_on();
    come_for_a_second(silence, 1000);
    EXPECT_FALSE(silence.is_time_to_ask(at(60'000))) << "nobody polled";
    silence.timed_out();
    EXPECT_FALSE(silence.is_time_to_ask(at(60'000)));
    silence.timed_out();
    EXPECT_TRUE(silence.is_time_to_ask(at(1'001)));
}

TEST_F(SilenceAt, records_in_between_reset_the_time_outs)
{
    Silence silence = going_on();
    come_for_a_second(silence, 1000);
    silence.timed_out();
    silence.came(1, at(1'500));
    silence.timed_out();
    EXPECT_FALSE(silence.is_time_to_ask(at(2'500)));
    silence.timed_out();
    EXPECT_TRUE(silence.is_time_to_ask(at(2'500)));
}

TEST_F(SilenceAt, a_slow_stream_is_asked_after_the_limit)
{
    Silence silence = going_on();
    come_for_a_second(silence, 1);
    time_out(silence, 5);
    EXPECT_FALSE(silence.is_time_to_ask(at(2'999)));
    EXPECT_TRUE(silence.is_time_to_ask(at(3'000)));
    EXPECT_FALSE(silence.is_over_limit(at(2'999)));
    EXPECT_TRUE(silence.is_over_limit(at(3'000)));
}

TEST_F(SilenceAt, what_is_given_counts_instead_of_the_default)
{
    Silence silence = going_on(milliseconds(5'000));
    EXPECT_EQ(silence.limit(), milliseconds(5'000));
    EXPECT_EQ(going_on().limit(), milliseconds(2'000));
    come_for_a_second(silence, 1);
    silence.timed_out();
    EXPECT_FALSE(silence.is_time_to_ask(at(5'999)));
    EXPECT_FALSE(silence.is_silence(at(5'999)));
    EXPECT_TRUE(silence.is_time_to_ask(at(6'000)));
    EXPECT_TRUE(silence.is_silence(at(6'000)));
}

TEST_F(SilenceAt, what_is_given_holds_for_a_quick_stream_too_but_not_for_asking_it)
{
    Silence silence = going_on(milliseconds(5'000));
    come_for_a_second(silence, 1000);
    time_out(silence, 2);
    EXPECT_TRUE(silence.is_time_to_ask(at(2'000)));
    EXPECT_FALSE(silence.is_silence(at(5'999)));
    EXPECT_TRUE(silence.is_silence(at(6'000)));
}

TEST_F(SilenceAt, the_end_of_a_quick_stream_is_a_silence_after_a_second)
{
    Silence silence = patient();
    come_for_a_second(silence, 1000);
    silence.timed_out();
    EXPECT_FALSE(silence.is_silence(at(1'999)));
    EXPECT_TRUE(silence.is_silence(at(2'000)));
    EXPECT_FALSE(silence.is_over_limit(at(10'999)));
    EXPECT_TRUE(silence.is_over_limit(at(11'000)));
}

TEST_F(SilenceAt, a_limit_below_a_second_is_not_lengthened_to_one)
{
    Silence silence(std::nullopt, milliseconds(300), at(0));
    silence.timed_out();
    EXPECT_FALSE(silence.is_silence(at(299)));
    EXPECT_TRUE(silence.is_silence(at(300)));
}

TEST_F(SilenceAt, the_end_of_a_slow_stream_is_not_a_silence_before_the_limit)
{
    Silence silence = patient();
    come_for_a_second(silence, 4);
    silence.timed_out();
    EXPECT_FALSE(silence.is_silence(at(10'999)));
    EXPECT_TRUE(silence.is_silence(at(11'000)));
}

TEST_F(SilenceAt, if_no_record_ever_came_a_second_is_enough_for_the_end)
{
    Silence silence = patient();
    silence.timed_out();
    EXPECT_FALSE(silence.is_silence(at(999)));
    EXPECT_TRUE(silence.is_silence(at(1'000)));
    Silence given = patient(milliseconds(3'000));
    given.timed_out();
    EXPECT_FALSE(given.is_silence(at(2'999)));
    EXPECT_TRUE(given.is_silence(at(3'000)));
}

// The first ones may be slow.
TEST_F(SilenceAt, a_first_wait_is_a_silence_in_the_middle_only_above_the_limit)
{
    for (const int64_t ms : {9'999, 10'000}) {
        Silence silence = patient();
        silence.timed_out();
        EXPECT_EQ(ended(silence.came(1, at(ms))), ms == 10'000 ? Limit(10'000) : Limit()) << ms;
    }
}

TEST_F(SilenceAt, a_gap_in_a_quick_stream_is_one_after_a_second)
{
    for (const int64_t gap : {999, 1'000}) {
        Silence silence = patient();
        come_for_a_second(silence, 1000);
        silence.timed_out();
        EXPECT_EQ(ended(silence.came(1, at(1'000 + gap))), gap == 1'000 ? Limit(1'000) : Limit());
        EXPECT_EQ(ended(silence.came(1, at(1'001 + gap))), Limit()) << "it is told once";
    }
}

TEST_F(SilenceAt, a_gap_in_a_slow_stream_is_one_after_the_limit)
{
    for (const int64_t gap : {9'999, 10'000}) {
        Silence silence = patient();
        come_for_a_second(silence, 4);
        silence.timed_out();
        EXPECT_EQ(ended(silence.came(1, at(1'000 + gap))), gap == 10'000 ? Limit(gap) : Limit());
    }
}

// A stopped process, or a slow disk.
TEST_F(SilenceAt, a_gap_in_which_nobody_polled_is_none)
{
    Silence silence = patient();
    come_for_a_second(silence, 1000);
    EXPECT_FALSE(silence.is_silence(at(3'600'000)));
    EXPECT_FALSE(silence.is_over_limit(at(3'600'000)));
    EXPECT_FALSE(silence.is_worth_a_word());
    EXPECT_EQ(ended(silence.came(1, at(3'600'000))), Limit());
}

TEST_F(SilenceAt, a_failure_counts_like_a_time_out)
{
    Silence silence = patient();
    come_for_a_second(silence, 1000);
    silence.disturb();
    EXPECT_TRUE(silence.is_silence(at(2'000)));
    EXPECT_FALSE(silence.is_time_to_ask(at(2'000))) << "no time-out was seen";
    EXPECT_EQ(ended(silence.came(1, at(4'200))), Limit(3'200));
    EXPECT_FALSE(silence.is_silence(at(9'000))) << "that it was disturbed is over";
}

TEST_F(SilenceAt, silences_do_not_count_for_the_rate)
{
    Silence silence = patient();
    come_for_a_second(silence, 6);
    silence.timed_out();
    silence.came(1, at(9'000));
    time_out(silence, 2);
    EXPECT_TRUE(silence.is_silence(at(10'000))) << "7 in a second, not in nine";
}

TEST_F(SilenceAt, gaps_that_are_not_silences_do_count_for_the_rate)
{
    Silence silence = patient();
    come_for_a_second(silence, 6);
    silence.came(1, at(9'000));
    time_out(silence, 2);
    EXPECT_FALSE(silence.is_silence(at(10'000))) << "7 in nine seconds";
}

TEST_F(SilenceAt, each_unsuccessful_try_doubles_the_wait_up_to_a_minute)
{
    Silence silence = going_on();
    come_for_a_second(silence, 1000);
    time_out(silence, 2);
    int64_t now = 2'000;
    for (const int64_t wait : {2'000, 4'000, 8'000, 16'000, 32'000, 60'000, 60'000}) {
        ASSERT_TRUE(silence.is_time_to_ask(at(now)));
        silence.asked(at(now));
        time_out(silence, 9);
        EXPECT_FALSE(silence.is_time_to_ask(at(now + wait - 1))) << wait;
        EXPECT_TRUE(silence.is_time_to_ask(at(now + wait))) << wait;
        now += wait;
    }
}

TEST_F(SilenceAt, the_first_wait_of_a_slow_stream_is_twice_its_limit)
{
    struct Row {
        int given_ms; // 0: none
        int wait_ms;
    };
    for (const Row row : {Row{0, 4'000}, Row{7'000, 14'000}, Row{30'000, 60'000},
                          Row{40'000, 60'000}, Row{200, 400}}) {
        Silence silence = row.given_ms == 0 ? going_on() : going_on(milliseconds(row.given_ms));
        silence.timed_out();
        silence.asked(at(50'000));
        EXPECT_FALSE(silence.is_time_to_ask(at(50'000 + row.wait_ms - 1))) << row.given_ms;
        EXPECT_TRUE(silence.is_time_to_ask(at(50'000 + row.wait_ms))) << row.given_ms;
    }
}

TEST_F(SilenceAt, records_reset_the_waits)
{
    Silence silence = going_on();
    come_for_a_second(silence, 1000);
    time_out(silence, 2);
    silence.asked(at(2'000));
    silence.asked(at(4'000));
    silence.came(100, at(5'000));
    EXPECT_FALSE(silence.is_time_to_ask(at(5'001)));
    time_out(silence, 2);
    EXPECT_TRUE(silence.is_time_to_ask(at(6'000)));
    silence.asked(at(6'000));
    EXPECT_FALSE(silence.is_time_to_ask(at(7'999)));
    EXPECT_TRUE(silence.is_time_to_ask(at(8'000)));
}

TEST_F(SilenceAt, asking_alone_does_not_end_a_silence)
{
    Silence silence = going_on();
    come_for_a_second(silence, 1000);
    time_out(silence, 2);
    silence.asked(at(3'000));
    EXPECT_EQ(silence.lasting(at(8'500)), milliseconds(7'500));
    EXPECT_TRUE(silence.is_silence(at(8'500)));
}

} // namespace
