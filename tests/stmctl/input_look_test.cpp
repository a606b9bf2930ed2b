// Goal: standard input is checked at once and then every ten milliseconds, however often the check
// is requested. Clock and terminal are the test's own.
#include "stmctl/process/stop.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <ctime>

using namespace stmctl;

namespace
{

long microseconds = 5'000'000;
int looks = 0;

class InputLook : public testing::Test
{
  protected:
    InputLook()
    {
        std::array<int, 2> ends = {}; // a pipe that stays empty
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        dup2(ends[0], STDIN_FILENO);
        close(ends[0]);
        microseconds += 1'000'000; // any look before is long ago
        looks = 0;
    }

    // Asks this often, this many microseconds apart. Returns how often it looked.
    static int asked(int times, long apart)
    {
        for (int i = 0; i < times; ++i) {
            EXPECT_FALSE(stop_requested());
            microseconds += apart;
        }
        return looks;
    }
};

TEST_F(InputLook, is_taken_at_once)
{
    EXPECT_EQ(asked(1, 0), 1);
}

TEST_F(InputLook, is_taken_each_ten_milliseconds)
{
    EXPECT_EQ(asked(1000, 100), 10);
}

TEST_F(InputLook, is_taken_each_time_if_asked_rarely)
{
    EXPECT_EQ(asked(20, 10'000), 20);
}

TEST_F(InputLook, is_taken_once_while_no_time_passes)
{
    EXPECT_EQ(asked(1000, 0), 1);
}

TEST_F(InputLook, of_a_run_is_taken_at_once_again)
{
    EXPECT_EQ(asked(1, 0), 1);
    take_all_input();
    EXPECT_FALSE(stop_requested());
    EXPECT_EQ(looks, 2);
}

} // namespace

// What the C++ library asks for the time, and stmctl for whether it has a terminal.
extern "C" int clock_gettime(clockid_t, timespec *time) noexcept
{
    time->tv_sec = microseconds / 1'000'000;
    time->tv_nsec = microseconds % 1'000'000 * 1'000;
    return 0;
}

extern "C" int isatty(int) noexcept
{
    ++looks;
    return 0;
}
