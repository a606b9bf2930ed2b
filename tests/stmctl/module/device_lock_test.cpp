// Goal: the wait for the device's lock ends when the lock is free or the wait is given up.
#include "stmctl/module/device_lock.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <string>
#include <vector>

using namespace stmctl;

namespace
{

using Milliseconds = std::chrono::milliseconds;

// Locks belong to what open returns, so one process can be both.
class DeviceLock : public testing::Test
{
  protected:
    DeviceLock() { flock(holder_, LOCK_EX); }
    ~DeviceLock() override
    {
        close(holder_);
        close(waiting_);
        unlink(path_.c_str());
    }

    // Waits until so many pauses are over; then the lock is free.
    bool wait_for(size_t pauses, bool gives_up)
    {
        return wait_for_lock(waiting_, "the file", [this, pauses, gives_up](Milliseconds time) {
            pauses_.push_back(time);
            if (pauses_.size() == pauses) {
                flock(holder_, LOCK_UN);
            }
            return !gives_up;
        });
    }

    bool is_left_to_others() const { return flock(holder_, LOCK_EX | LOCK_NB) == 0; }

    std::vector<Milliseconds> pauses_;

  private:
    int open_file() const { return open(path_.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0600); }

    std::string path_ = testing::TempDir() + "device-lock-" + std::to_string(getpid());
    int holder_ = open_file();
    int waiting_ = open_file();
};

TEST_F(DeviceLock, is_tried_again_every_100_milliseconds)
{
    EXPECT_TRUE(wait_for(3, false));
    EXPECT_EQ(pauses_, std::vector<Milliseconds>(3, Milliseconds(100)));
}

TEST_F(DeviceLock, is_not_taken_after_the_wait_was_given_up)
{
    EXPECT_FALSE(wait_for(1, true));
    EXPECT_EQ(pauses_.size(), 1U);
    EXPECT_TRUE(is_left_to_others());
}

} // namespace
