// Goal: how much is said depends on the detail that the user has chosen, and a failure always is.
#include "stmctl/output/output.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace stmctl;

namespace
{

std::string said_with(Detail chosen)
{
    set_detail(chosen);
    testing::internal::CaptureStderr();
    say("failure");
    remark("remark");
    say_more("more");
    set_detail(Detail::usual);
    return testing::internal::GetCapturedStderr();
}

TEST(Saying, goes_as_far_as_the_user_wants)
{
    EXPECT_EQ(said_with(Detail::quiet), "stmctl: failure\n");
    EXPECT_EQ(said_with(Detail::usual), "stmctl: failure\nstmctl: remark\n");
    EXPECT_EQ(said_with(Detail::verbose), "stmctl: failure\nstmctl: remark\nstmctl: more\n");
}

} // namespace
