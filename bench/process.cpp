// Processes.
#include "bench/process.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
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
    static const int DESCRIPTOR = open("/dev/null", O_RDWR | O_CLOEXEC);
    return DESCRIPTOR;
}

pid_t start(Command command, int output)
{
    std::vector<char *> words;
    for (std::string &word : command) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, null_device(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t child = -1;
    const int error = posix_spawn(&child, words[0], &actions, nullptr, words.data(), nullptr);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        die(words[0]);
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

double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
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

Ended run(const Command &command)
{
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        die("pipe");
    }
    const pid_t child = start(command, ends[1]);
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

double run_time(const Command &command)
{
    const int output = null_device();
    const auto begin = std::chrono::steady_clock::now();
    wait_for(start(command, output));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double processor_time(const Command &command)
{
    const pid_t child = start(command, null_device());
    int status = 0;
    rusage usage = {};
    if (wait4(child, &status, 0, &usage) != child || status != 0) {
        die(command[0].c_str());
    }
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// The figures of wait4 include a child's time before exec, with this program's memory. Therefore the
// child is stopped at its exit, where the system still has the figures of the program itself.
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
    wait_for(child); // stopped after exec
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
