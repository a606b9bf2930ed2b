// Goal: output that could not be written fails a run that was good otherwise, and no other status
// is lost.
#include "stmctl/output/output.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>

using namespace stmctl;

namespace
{

struct End {
    int status = -1;
    std::string errors;
};

// Of a process with this standard output, which prints a line and ends like this.
End end_of(int output, ExitStatus status)
{
    std::array<int, 2> errors = {};
    EXPECT_EQ(pipe2(errors.data(), O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        prepare_output();
        dup2(output, STDOUT_FILENO);
        dup2(errors[1], STDERR_FILENO);
        print("a line\n");
        _exit(static_cast<int>(finish_output(status)));
    }
    close(errors[1]);
    End end;
    std::array<char, 200> text = {};
    const ssize_t size = read(errors[0], text.data(), text.size());
    end.errors.assign(text.data(), static_cast<size_t>(size));
    close(errors[0]);
    int ended = 0;
    waitpid(child, &ended, 0);
    end.status = WEXITSTATUS(ended);
    return end;
}

TEST(OutputEnd, on_a_full_disk_fails_what_was_good_otherwise)
{
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const std::pair<ExitStatus, int> statuses[] = {
        {ExitStatus::done, 1},    {ExitStatus::failed, 1},    {ExitStatus::usage, 2},
        {ExitStatus::stopped, 1}, {ExitStatus::not_there, 4},
    };
    for (const auto &[before, after] : statuses) {
        const End end = end_of(full, before);
        EXPECT_EQ(end.status, after);
        EXPECT_EQ(end.errors, "stmctl: cannot write the output: No space left on device\n");
    }
    close(full);
}

TEST(OutputEnd, without_a_reader_is_none_of_its_business)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    close(ends[0]);
    for (const int status : {0, 1, 2, 3, 4}) {
        const End end = end_of(ends[1], ExitStatus{status});
        EXPECT_EQ(end.status, status);
        EXPECT_EQ(end.errors, "");
    }
    close(ends[1]);
}

TEST(OutputEnd, that_is_written_keeps_its_status)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    EXPECT_EQ(end_of(ends[1], ExitStatus::stopped).status, 3);
    std::array<char, 20> text = {};
    EXPECT_EQ(read(ends[0], text.data(), text.size()), 7) << "a line";
    close(ends[0]);
    close(ends[1]);
}

} // namespace
