// Whether a program that once was here is still there.
#include "simulator/store/program_life.hpp"

#include <gtest/gtest.h>

#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <string>

namespace simulator
{

namespace
{

TEST(ProgramLife, lasts_as_long_as_any_of_its_threads)
{
    const pid_t child = fork();
    if (child == 0) {
        pthread_t other = {};
        pthread_create(
            &other, nullptr,
            [](void *) -> void * {
                for (;;) {
                    pause();
                }
            },
            nullptr);
        syscall(SYS_exit, 0); // of this thread alone
    }
    const std::string path = "/proc/" + std::to_string(child) + "/stat";
    for (std::string line; line.find(") Z ") == std::string::npos; sched_yield()) {
        std::ifstream file(path);
        std::getline(file, line);
    }
    const ProgramLife life = {static_cast<uint32_t>(child), 0, 0};
    EXPECT_TRUE(is_alive(life));
    kill(child, SIGKILL);
    siginfo_t ended = {};
    EXPECT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    EXPECT_FALSE(is_alive(life)) << "which only waits for its parent";
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
}

TEST(ProgramLife, is_this_ones_and_no_others)
{
    const ProgramLife own = this_program();
    EXPECT_EQ(own.process, static_cast<uint32_t>(getpid()));
    EXPECT_TRUE(is_alive(own));
    EXPECT_FALSE(is_alive({own.process, 0, own.start + 1})) << "a later one of the same number";
    EXPECT_TRUE(is_alive({own.process, 0, 0})) << "whose beginning is not known";
    EXPECT_FALSE(is_alive({UINT32_MAX, 0, 0})) << "which would be all processes";
}

} // namespace

} // namespace simulator
