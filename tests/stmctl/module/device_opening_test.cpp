// Goal: why the device cannot be opened is known, also if it may be read but not written.
#include "stmctl/module/device.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <vector>

using namespace stmctl;

namespace
{

// What opening the device gives: 0, or an errno.
int to_read = 0;
int to_write = 0;
std::vector<int> opened; // descriptors

int open_device(int flags)
{
    const int error = (flags & O_ACCMODE) == O_RDONLY ? to_read : to_write;
    if (error != 0) {
        errno = error;
        return -1;
    }
    opened.push_back(dup(STDERR_FILENO));
    return opened.back();
}

bool is_open(int descriptor)
{
    return fcntl(descriptor, F_GETFD) >= 0;
}

} // namespace

extern "C" int __real_open64(const char *path, int flags, ...); // NOLINT: the linker's name
extern "C" int __wrap_open64(const char *path, int flags, ...)  // NOLINT: the linker's name
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return strcmp(path, DEVICE) == 0 ? open_device(flags) : __real_open64(path, flags, mode);
}

namespace
{

class DeviceOpening : public testing::Test
{
  protected:
    void expect_refused(int reading, int writing, int error)
    {
        to_read = reading;
        to_write = writing;
        errno = 0;
        EXPECT_EQ(open_to_lock(), -1);
        EXPECT_EQ(errno, error);
        for (const int descriptor : opened) {
            EXPECT_FALSE(is_open(descriptor));
        }
        opened.clear();
    }
};

TEST_F(DeviceOpening, that_fails_has_its_reason)
{
    expect_refused(ENOENT, ENOENT, ENOENT);
    expect_refused(EACCES, EACCES, EACCES);
}

TEST_F(DeviceOpening, for_writing_has_its_own_reason)
{
    expect_refused(0, EACCES, EACCES);
    expect_refused(0, EROFS, EROFS);
}

TEST_F(DeviceOpening, leaves_only_what_is_to_be_locked_open)
{
    to_read = 0;
    to_write = 0;
    const int lock = open_to_lock();
    ASSERT_EQ(opened.size(), 2U);
    EXPECT_EQ(lock, opened[0]);
    EXPECT_TRUE(is_open(opened[0]));
    EXPECT_FALSE(is_open(opened[1]));
    close(lock);
    opened.clear();
}

} // namespace
