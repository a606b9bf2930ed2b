// Processes.
#include "bench/process.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace bench
{

namespace
{

[[noreturn]] void die(const char *text)
{
    perror(text);
    exit(1);
}

int null_device()
{
    static const int DESCRIPTOR = open("/dev/null", O_WRONLY | O_CLOEXEC);
    return DESCRIPTOR;
}

pid_t start(const char *program, int output)
{
    std::array<char, 1> no_name = {};
    std::array<char *, 2> arguments = {no_name.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t child = -1;
    const int error = posix_spawn(&child, program, &actions, nullptr, arguments.data(), nullptr);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        die(program);
    }
    return child;
}

int wait_for(pid_t child)
{
    int status = 0;
    if (waitpid(child, &status, 0) != child) {
        die("waitpid");
    }
    return status;
}

int64_t high_water_mark(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string word;
    int64_t kib = -1;
    while (status >> word && word != "VmHWM:") {
    }
    status >> kib;
    return kib;
}

} // namespace

Ended run(const char *program)
{
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        die("pipe");
    }
    const pid_t child = start(program, ends[1]);
    close(ends[1]);
    Ended ended = {-1, {}};
    std::array<char, 4096> piece;
    ssize_t size = 0;
    while ((size = read(ends[0], piece.data(), piece.size())) > 0) {
        ended.output.append(piece.data(), static_cast<size_t>(size));
    }
    close(ends[0]);
    const int status = wait_for(child);
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}

double run_time(const char *program)
{
    const int output = null_device();
    const auto begin = std::chrono::steady_clock::now();
    wait_for(start(program, output));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// What wait4 tells of a child includes its time before exec, with this program's memory. So the
// child is stopped at its exit, where the system still tells what the program itself has had.
int64_t peak_memory(const char *program)
{
    const int output = null_device();
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        dup2(output, STDOUT_FILENO);
        execl(program, program, static_cast<char *>(nullptr));
        _exit(127);
    }
    wait_for(child); // stopped behind exec
    if (ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACEEXIT) != 0 ||
        ptrace(PTRACE_CONT, child, nullptr, nullptr) != 0) {
        die("ptrace");
    }
    wait_for(child); // stopped at its exit
    const int64_t kib = high_water_mark(child);
    if (kib <= 0) {
        die("VmHWM");
    }
    ptrace(PTRACE_CONT, child, nullptr, nullptr);
    wait_for(child);
    return kib;
}

} // namespace bench
