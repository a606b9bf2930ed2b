// Goal: words for users and processes that have gone, and a mark that cannot be left.
#include "stmctl/process/failure.hpp"
#include "stmctl/ring/segment.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

TEST(Segment, that_cannot_be_attached_takes_no_mark)
{
    try {
        leave_mark(-1, WriterMark::ended);
        FAIL() << "left";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.status(), ExitStatus::not_there);
        EXPECT_EQ(std::string(failure.what()),
                  "the ring's segment cannot be attached: Invalid argument");
    }
}

TEST(Segment, may_belong_to_a_user_without_a_name)
{
    EXPECT_EQ(user_words(0), "user root");
    EXPECT_EQ(user_words(4'000'001), "user 4000001");
}

TEST(Process, that_has_gone_is_told_so)
{
    EXPECT_EQ(process_name(4'194'305), "process 4194305 (gone)"); // more than there can be
}

} // namespace
