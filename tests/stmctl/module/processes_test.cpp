// Goal: who else has a file open, as far as that is visible, and how a process is named.
#include "stmctl/module/processes.hpp"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>

using namespace stmctl;

namespace
{

constexpr uid_t NOBODY = 65534;

// A process that becomes a program closes what it inherited before its new words are to be seen.
void await_words_of(pid_t process)
{
    constexpr int LOOKS = 300'000; // one each millisecond, against hanging alone
    const std::string none = "process " + std::to_string(process) + " ()";
    for (int look = 0; look < LOOKS && process_words(process) == none; ++look) {
        usleep(1000);
    }
}

class Users : public testing::Test
{
  protected:
    Users() : file_(mkstemp(path_.data())) {}
    ~Users() override
    {
        while (!children_.empty()) {
            end(children_.back());
        }
        close(file_);
        unlink(path_.c_str());
    }

    int file() const { return file_; }
    const std::string &path() const { return path_; }

    // Another process, which opens a file in this way and becomes "sleep 1000"; it has done so when
    // this returns.
    pid_t opened_with(int flags, const std::string &path)
    {
        int ends[2] = {};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        const pid_t child = fork();
        if (child == 0) {
            close(file_);
            if (open(path.c_str(), flags) >= 0) {
                execl("/bin/sleep", "/bin/sleep", "1000", nullptr);
            }
            _exit(127);
        }
        close(ends[1]);
        char none = 0;
        EXPECT_EQ(read(ends[0], &none, 1), 0); // closed by what the child becomes
        close(ends[0]);
        await_words_of(child);
        children_.push_back(child);
        return child;
    }

    pid_t opened_with(int flags) { return opened_with(flags, path_); }

    void end(pid_t child)
    {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        std::erase(children_, child);
    }

    std::vector<pid_t> seen() const { return other_users_of(file_).processes; }

    // What another user sees: whether some are hidden, and how many have it open.
    int as_nobody() const
    {
        const pid_t child = fork();
        if (child == 0) {
            const bool changed = geteuid() != 0 || (setgid(NOBODY) == 0 && setuid(NOBODY) == 0);
            const DeviceUsers users = other_users_of(file_);
            _exit(!changed
                      ? 99
                      : (users.some_hidden ? 10 : 0) + static_cast<int>(users.processes.size()));
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    }

  private:
    std::string path_ = testing::TempDir() + "users-XXXXXX";
    int file_;
    std::vector<pid_t> children_;
};

TEST_F(Users, no_other_process_has_it_open)
{
    EXPECT_EQ(seen(), std::vector<pid_t>());
    const int again = open(path().c_str(), O_RDWR);
    EXPECT_EQ(seen(), std::vector<pid_t>()) << "this process does not count";
    close(again);
    EXPECT_EQ(DeviceUsers{}.words(), "");
    EXPECT_EQ(DeviceUsers{}.suspicion(), "another program may have used the device");
}

TEST_F(Users, another_process_is_named_with_its_command_line_but_without_its_path)
{
    const pid_t other = opened_with(O_RDWR);
    EXPECT_EQ(seen(), std::vector<pid_t>{other});
    const DeviceUsers users = other_users_of(file());
    const std::string words = "process " + std::to_string(other) + " (sleep 1000)";
    EXPECT_EQ(users.words(), words);
    EXPECT_EQ(users.clause("the device"), words + " has the device open");
    EXPECT_EQ(users.suspicion(),
              "another program may have used the device: " + words + " has it open");
}

TEST_F(Users, all_ways_to_have_it_open_but_one_count)
{
    for (const int flags :
         {O_RDONLY, O_WRONLY, O_RDWR, O_RDWR | O_NONBLOCK, O_WRONLY | O_NONBLOCK}) {
        const pid_t other = opened_with(flags);
        EXPECT_EQ(seen(), std::vector<pid_t>{other}) << flags;
        end(other);
        EXPECT_EQ(seen(), std::vector<pid_t>()) << "it has ended";
    }
    opened_with(O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(seen(), std::vector<pid_t>()) << "it only waits for the lock";
    const pid_t talks = opened_with(O_RDWR);
    EXPECT_EQ(seen(), std::vector<pid_t>{talks});
}

TEST_F(Users, several_are_all_named)
{
    std::vector<pid_t> others = {opened_with(O_RDWR), opened_with(O_RDWR)};
    std::vector<pid_t> found = seen();
    std::ranges::sort(others);
    std::ranges::sort(found);
    EXPECT_EQ(found, others);
    const std::string clause = other_users_of(file()).clause("the device");
    EXPECT_NE(clause.find(" (sleep 1000) and process "), std::string::npos) << clause;
    EXPECT_TRUE(clause.ends_with(" (sleep 1000) have the device open")) << clause;
}

TEST_F(Users, the_file_counts_not_its_name)
{
    const std::string moved = path() + ".moved";
    const pid_t before = opened_with(O_RDWR);
    ASSERT_EQ(rename(path().c_str(), moved.c_str()), 0);
    close(open(path().c_str(), O_RDWR | O_CREAT, 0600));
    opened_with(O_RDWR); // another file of the old name
    EXPECT_EQ(seen(), std::vector<pid_t>{before});
    const pid_t other_name = opened_with(O_RDWR, moved);
    EXPECT_EQ(seen().size(), 2U);
    EXPECT_NE(std::ranges::count(seen(), other_name), 0);
    unlink(moved.c_str());
    EXPECT_EQ(seen().size(), 2U) << "it has no name any more";
}

TEST_F(Users, processes_that_cannot_be_inspected_are_reported)
{
    opened_with(O_RDWR);
    if (geteuid() != 0 && access("/proc/1/fd", R_OK) == 0) {
        GTEST_SKIP() << "this user may look at all of them";
    }
    EXPECT_EQ(as_nobody(), geteuid() == 0 ? 10 : 11) << "of root's processes one sees nothing";
}

TEST_F(Users, what_is_not_an_open_file_has_no_users)
{
    opened_with(O_RDWR);
    EXPECT_TRUE(other_users_of(-1).processes.empty());
    EXPECT_FALSE(other_users_of(-1).some_hidden);
}

// A program that writes over its own name leaves such words, too.
TEST_F(Users, a_process_is_named_without_the_empty_words_at_its_end)
{
    int ends[2] = {};
    int begun[2] = {};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC) + pipe2(begun, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[0], STDIN_FILENO);
        execl("/bin/cat", "/bin/cat", "-", "", "", "", nullptr);
        _exit(127);
    }
    close(begun[1]);
    char none = 0;
    EXPECT_EQ(read(begun[0], &none, 1), 0); // closed by what the child becomes
    await_words_of(child);
    EXPECT_EQ(process_words(child), "process " + std::to_string(child) + " (cat -)");
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(begun[0]);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(Users, a_process_that_has_ended_has_no_command_line)
{
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    EXPECT_EQ(process_words(child), "process " + std::to_string(child) + " ()");
}

} // namespace
