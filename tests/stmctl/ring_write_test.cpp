// ring write: what it reports about the records that it has written, and about those that it has
// not.
#include "tests/stmctl/ring_bench.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace
{

class RingWrite : public RingBench
{
};

TEST_F(RingWrite, rejected_records_are_counted)
{
    const Result result =
        script("$BOARD --count-time --fault flip@90 $STMCTL ring write --duration 1");
    EXPECT_NE(result.errors.find(" records, 1 lost, 1 rejected, 0 overflowing\n"),
              std::string::npos)
        << result.errors;
}

// Block 3 comes in exchange 117, the next request follows, and then the poll that fails.
TEST_F(RingWrite, records_of_a_block_that_no_poll_follows_are_counted)
{
    const Result result = script("$BOARD --board kept --count-time --fault exchange@119 $STMCTL "
                                 "ring write --duration 1 </dev/null\n"
                                 "sed -n 's/^delivered  *//p' kept/counts");
    const std::string delivered = result.output.substr(0, result.output.find('\n'));
    EXPECT_GT(std::stoi(delivered), 300);
    EXPECT_NE(result.errors.find("ring write: " + delivered + " records, "), std::string::npos)
        << result.output << result.errors;
    EXPECT_NE(result.errors.find(", 1 failing exchange\n"), std::string::npos);
}

TEST_F(RingWrite, waits_for_the_device_when_told_and_refuses_otherwise)
{
    says({"state"});
    const int lock = open(path("board/spidev1.0").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const Result refused = in_shell({"ring", "write"}, "</dev/null");
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.errors.ends_with("); use --wait to wait for it\n")) << refused.errors;
    const Result stopped = in_shell({"ring", "write", "--wait"}, "<<<s");
    EXPECT_EQ(stopped.status, 3);
    EXPECT_TRUE(stopped.errors.ends_with(")\nstmctl: stopped while waiting for /dev/spidev1.0\n"))
        << stopped.errors;
    close(lock);
}

} // namespace
