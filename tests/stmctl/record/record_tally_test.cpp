// Goal: the outcome of a stream is counted, and shown as text and as an object.
#include "stmctl/record/record_tally.hpp"

#include <gtest/gtest.h>

using namespace stmctl;
using std::chrono::milliseconds;

namespace
{

RecordFacts at(uint32_t rel_t, uint32_t buffered = 0)
{
    return {true, rel_t, buffered};
}

RecordTally tally_of(const std::vector<RecordFacts> &stream)
{
    RecordTally tally;
    for (const RecordFacts &facts : stream) {
        tally.take(facts);
    }
    return tally;
}

TEST(RecordTally, counts_what_is_missing_before_a_record)
{
    RecordTally tally;
    EXPECT_EQ(tally.take(at(5)), 0U) << "the first may be any";
    EXPECT_EQ(tally.take(at(6)), 0U);
    EXPECT_EQ(tally.take(at(10)), 3U);
    EXPECT_EQ(tally.records, 3U);
    EXPECT_EQ(tally.lost, 3U);
    EXPECT_EQ(tally.last.rel_t, 10U);
}

TEST(RecordTally, knows_that_the_time_wraps_around)
{
    const RecordTally tally = tally_of({at(0xFFFFFFFE), at(0xFFFFFFFF), at(0), at(2)});
    EXPECT_EQ(tally.lost, 1U);
    EXPECT_EQ(tally.backward, 0U);
}

TEST(RecordTally, does_not_count_a_step_back_as_a_loss)
{
    const RecordTally tally = tally_of({at(9), at(9), at(3), at(4)});
    EXPECT_EQ(tally.lost, 0U);
    EXPECT_EQ(tally.backward, 2U);
}

TEST(RecordTally, counts_records_with_more_than_190_behind_them)
{
    RecordTally tally = tally_of({at(1, 190), at(2, 191), at(3, 255), at(4, 7)});
    EXPECT_EQ(tally.overflowing, 2U);
    EXPECT_EQ(tally.fullest, 255U);
    tally.fullest = 0;
    tally.take(at(5, 8));
    EXPECT_EQ(tally.fullest, 8U);
}

TEST(RecordTally, counts_more_losses_than_fit_into_32_bits)
{
    const RecordTally tally = tally_of({at(0), at(0x7FFFFFFF), at(0xFFFFFFFE), at(0x7FFFFFFD)});
    EXPECT_EQ(tally.backward, 0U);
    EXPECT_EQ(tally.summary({}), "4 records, 6442450938 lost, 0 rejected, 0 overflowing");
}

TEST(RecordTally, of_an_even_stream_is_flawless)
{
    const RecordTally tally = tally_of({at(1), at(2), at(3)});
    EXPECT_TRUE(tally.is_flawless());
    EXPECT_FALSE(tally.has_holes());
    EXPECT_EQ(tally.summary({}), "3 records, 0 lost, 0 rejected, 0 overflowing");
    EXPECT_EQ(tally.summary(3), "3 of 3 records, 0 lost, 0 rejected, 0 overflowing");
    EXPECT_EQ(tally.summary(1), "3 of 1 record, 0 lost, 0 rejected, 0 overflowing");
}

TEST(RecordTally, has_holes_where_something_of_the_stream_is_missing)
{
    EXPECT_TRUE(tally_of({at(1), at(3)}).has_holes());
    EXPECT_TRUE(tally_of({at(1), at(1)}).has_holes());
    EXPECT_TRUE(tally_of({at(1, 191)}).has_holes());
    RecordTally rejected;
    rejected.take_rejected();
    EXPECT_TRUE(rejected.has_holes());
    RecordTally silent;
    silent.take_silence(milliseconds(1));
    EXPECT_TRUE(silent.has_holes());
    EXPECT_FALSE(silent.is_flawless());
}

TEST(RecordTally, has_no_holes_from_what_only_took_longer)
{
    RecordTally late;
    late.take_timeout();
    EXPECT_FALSE(late.has_holes());
    EXPECT_FALSE(late.is_flawless());
    RecordTally failing;
    failing.failures = 1;
    EXPECT_FALSE(failing.has_holes());
    EXPECT_FALSE(failing.is_flawless());
}

TEST(RecordTally, counts_each_kind_of_event)
{
    RecordTally tally = tally_of({at(1, 200), at(4), at(2)});
    tally.take_rejected();
    tally.take_timeout();
    tally.take_timeout();
    tally.failures = 1;
    EXPECT_EQ(tally.summary(9), "3 of 9 records, 2 lost, 1 rejected, 1 overflowing, 1 step back in "
                                "rel_t, 2 time-outs, 1 failing exchange");
}

TEST(RecordTally, mentions_silences_only_if_there_were_any)
{
    RecordTally tally = tally_of({at(1), at(1)});
    tally.take_timeout();
    tally.take_silence(milliseconds(4230));
    EXPECT_EQ(tally.summary({}), "2 records, 0 lost, 0 rejected, 0 overflowing, silent for 4.2 s, "
                                 "1 step back in rel_t, 1 time-out");
    tally.take_silence(milliseconds(1000));
    tally.take_silence(milliseconds(7170));
    EXPECT_EQ(tally.summary({}),
              "2 records, 0 lost, 0 rejected, 0 overflowing, silent 3 times, for 12.4 s in all, "
              "1 step back in rel_t, 1 time-out");
}

TEST(RecordTally, mentions_what_hex_does_not_show)
{
    RecordTally tally = tally_of({{}, {}});
    EXPECT_EQ(tally.summary({}), "2 records, 0 rejected; hex does not show losses");
    tally.take_silence(milliseconds(2500));
    tally.take_timeout();
    EXPECT_EQ(tally.summary({}), "2 records, 0 rejected, silent for 2.5 s; hex does not show "
                                 "losses, 1 time-out");
}

TEST(RecordTally, is_an_object_on_one_line)
{
    RecordTally tally;
    for (uint32_t rel_t = 1; rel_t <= 120; ++rel_t) {
        tally.take(at(rel_t));
    }
    EXPECT_EQ(
        tally.json({}),
        R"({"records":120,"wanted":null,"lost":0,"rejected":0,"overflowing":0,"steps_back":0,)"
        R"("timeouts":0,"failing_exchanges":0,"silences":0,"silent_seconds":0.000})");
    tally.take(at(125, 255));
    tally.take(at(125));
    tally.take_rejected();
    tally.take_timeout();
    tally.failures = 6;
    tally.take_silence(milliseconds(4));
    tally.take_silence(milliseconds(12000));
    EXPECT_EQ(tally.json(500),
              R"({"records":122,"wanted":500,"lost":4,"rejected":1,"overflowing":1,"steps_back":1,)"
              R"("timeouts":1,"failing_exchanges":6,"silences":2,"silent_seconds":12.004})");
}

TEST(RecordTally, has_no_losses_in_its_object_where_hex_shows_none)
{
    EXPECT_EQ(tally_of({{}, {}}).json(2),
              R"({"records":2,"wanted":2,"lost":null,"rejected":0,"overflowing":null,)"
              R"("steps_back":0,"timeouts":0,"failing_exchanges":0,"silences":0,)"
              R"("silent_seconds":0.000})");
}

} // namespace
