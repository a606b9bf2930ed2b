// ring write: what it reports about the records that it has written, and about those that it has
// not.
#include "tests/stmctl/ring_bench.hpp"

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

} // namespace
