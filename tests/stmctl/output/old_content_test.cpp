// Goal: where the last whole line of a file ends, and that it is not guessed.
#include "stmctl/output/old_content.hpp"

#include "stmctl/process/failure.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

using namespace stmctl;

namespace
{

class OldContentOfFile : public testing::Test
{
  protected:
    ~OldContentOfFile() override { unlink(path_.c_str()); }

    // Opened like this, with this text in it.
    int file(const std::string &text, int flags = O_RDONLY)
    {
        const int writer = open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        EXPECT_EQ(write(writer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(writer);
        return open(path_.c_str(), flags | O_CLOEXEC);
    }

    static void expect_unreadable(int descriptor, const std::string &reason)
    {
        try {
            end_of_last_line(descriptor);
            ADD_FAILURE() << "guessed";
        } catch (const Failure &failure) {
            EXPECT_EQ(failure.what(), "cannot read the end of the log: " + reason);
            EXPECT_EQ(failure.status(), ExitStatus::failed);
        }
    }

  private:
    std::string path_ = testing::TempDir() + "old-content-" + std::to_string(getpid());
};

TEST_F(OldContentOfFile, has_its_last_line_found_wherever_pieces_of_it_begin)
{
    for (const size_t half : {0U, 1U, 4095U, 4096U, 4097U, 9000U}) {
        const int descriptor = file("one\ntwo\n" + std::string(half, 'x'));
        EXPECT_EQ(end_of_last_line(descriptor), 8) << half;
        close(descriptor);
    }
}

TEST_F(OldContentOfFile, without_a_newline_has_none)
{
    for (const size_t size : {0U, 1U, 5000U}) {
        const int descriptor = file(std::string(size, 'x'));
        EXPECT_EQ(end_of_last_line(descriptor), std::nullopt) << size;
        close(descriptor);
    }
}

TEST_F(OldContentOfFile, that_cannot_be_read_is_not_taken_for_one_without_lines)
{
    const int descriptor = file("one\ntwo\n", O_WRONLY);
    expect_unreadable(descriptor, "Bad file descriptor");
    close(descriptor);
}

// As a file that another process shortens meanwhile: the system's have a size that nobody reads.
TEST_F(OldContentOfFile, that_ends_before_its_size_is_not_blamed_on_an_earlier_error)
{
    const int descriptor = open("/sys/devices/system/cpu/online", O_RDONLY | O_CLOEXEC);
    if (size_of_regular(descriptor) < 4096) {
        GTEST_SKIP() << "there is no such file here";
    }
    errno = ENOENT;
    expect_unreadable(descriptor, "Input/output error");
    close(descriptor);
}

} // namespace
