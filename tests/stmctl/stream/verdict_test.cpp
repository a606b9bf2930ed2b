// Goal: the exit status of each ending of a run, and of each kind of hole.
#include "stmctl/stream/verdict.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

RunOptions endless()
{
    return {};
}

RunOptions limited()
{
    RunOptions options;
    options.duration = "5";
    return options;
}

RecordTally of_records(uint64_t records)
{
    RecordTally tally;
    tally.records = records;
    return tally;
}

TEST(Verdict, a_run_is_done_if_anything_came)
{
    for (const RunOptions &options : {endless(), limited()}) {
        EXPECT_EQ(status_of(Ending::done, options, of_records(1)), ExitStatus::done);
        EXPECT_EQ(status_of(Ending::done, options, of_records(0)), ExitStatus::failed);
        EXPECT_EQ(status_of(Ending::failed, options, of_records(1)), ExitStatus::failed);
    }
}

TEST(Verdict, a_stop_ends_an_endless_run_well_unless_it_was_silent)
{
    EXPECT_EQ(status_of(Ending::stopped, endless(), of_records(0)), ExitStatus::done);
    EXPECT_EQ(status_of(Ending::stopped_in_silence, endless(), of_records(9)), ExitStatus::failed);
}

TEST(Verdict, a_stop_cuts_a_limited_run_short_whether_silent_or_not)
{
    RunOptions counted;
    counted.count = "10";
    for (const RunOptions &options : {limited(), counted}) {
        EXPECT_EQ(status_of(Ending::stopped, options, of_records(9)), ExitStatus::stopped);
        EXPECT_EQ(status_of(Ending::stopped_in_silence, options, of_records(9)),
                  ExitStatus::stopped);
    }
}

TEST(Verdict, each_kind_of_hole_alone_is_a_failure_where_there_is_to_be_none)
{
    for (uint64_t RecordTally::*const hole :
         {&RecordTally::lost, &RecordTally::rejected, &RecordTally::overflowing,
          &RecordTally::backward, &RecordTally::silences}) {
        RecordTally tally = of_records(9);
        tally.*hole = 1;
        for (const Ending ending : {Ending::done, Ending::stopped, Ending::stopped_in_silence}) {
            RunOptions options = limited();
            EXPECT_NE(status_of(ending, options, tally), ExitStatus::failed);
            options.fail_on_loss = true;
            EXPECT_EQ(status_of(ending, options, tally), ExitStatus::failed);
        }
    }
}

TEST(Verdict, what_cost_nothing_is_not_a_hole)
{
    RecordTally tally = of_records(9);
    tally.timeouts = tally.failures = 3;
    RunOptions options = limited();
    options.fail_on_loss = true;
    EXPECT_EQ(status_of(Ending::done, options, tally), ExitStatus::done);
}

} // namespace
