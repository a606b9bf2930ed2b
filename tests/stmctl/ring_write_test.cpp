// ring write: what it says of the records that it has put, and of those that it has not.
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

} // namespace
