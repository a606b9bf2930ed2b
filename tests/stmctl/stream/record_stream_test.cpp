// Goal: what the module says beside records is counted where it is known, and passed on where not.
#include "stmctl/stream/record_stream.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

TEST(RecordStream, passes_on_the_first_line_of_what_it_does_not_know)
{
    RecordTally tally;
    stmctl::Run run({}); // not the one of gtest
    RecordStream stream({"follow", {}, false, {}}, run, tally);
    testing::internal::CaptureStderr();
    stream.take_report("something odd\nand more\n");
    stream.take_report("without an end");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "stmctl: something odd\nstmctl: without an end\n");
    EXPECT_EQ(tally.timeouts, 0U);
    EXPECT_EQ(tally.rejected, 0U);
}

TEST(RecordStream, counts_time_outs_and_what_was_rejected)
{
    RecordTally tally;
    stmctl::Run run({}); // not the one of gtest
    RecordStream stream({"follow", {}, false, {}}, run, tally);
    testing::internal::CaptureStderr();
    stream.take_report("SPI timeout\n");
    stream.take_report("SPI timeout\n");
    stream.take_report("Wrong checksum detected");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(tally.timeouts, 2U);
    EXPECT_EQ(tally.rejected, 1U);
}

} // namespace
