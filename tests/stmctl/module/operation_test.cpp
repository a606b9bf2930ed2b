// Goal: an operation that failed ends a command, a failure before a time-out before a stop.
#include "stmctl/module/operation.hpp"
#include "stmctl/process/failure.hpp"

#include <gtest/gtest.h>

#include <cerrno>

using namespace stmctl;

namespace
{

void expect_ends(const Outcome &outcome, ExitStatus status, const std::string &sentence)
{
    try {
        check(outcome, "peek");
        ADD_FAILURE() << "goes on";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.status(), status);
        EXPECT_EQ(failure.what(), sentence);
    }
}

TEST(Outcomes, end_a_command_unless_they_are_good)
{
    Outcome outcome;
    EXPECT_NO_THROW(check(outcome, "peek"));
    outcome.rejected = true;
    EXPECT_NO_THROW(check(outcome, "peek"));
    outcome.stopped = true;
    expect_ends(outcome, ExitStatus::stopped, "peek: stopped before it had finished");
    outcome.timed_out = true;
    expect_ends(outcome, ExitStatus::failed, "peek: the co-processor did not answer in time");
    outcome.failures = {{"SPI command", "Input/output error", EIO}, {"read data", "no", EIO}};
    expect_ends(outcome, ExitStatus::failed,
                "peek: sending the command failed: Input/output error");
}

} // namespace
