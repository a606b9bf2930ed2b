// gnuplot, run as a filter.
#include "stmctl/plot/gnuplot.hpp"

#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace stmctl
{

namespace
{

struct Pipe {
    int read_end = -1;
    int write_end = -1;

    Pipe()
    {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw Failure(ExitStatus::failed,
                          fmt::format("cannot make a pipe: {}", strerror(errno)));
        }
        read_end = ends[0];
        write_end = ends[1];
    }
    ~Pipe()
    {
        close_end(read_end);
        close_end(write_end);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    static void close_end(int &end)
    {
        if (end >= 0) {
            close(end);
        }
        end = -1;
    }
};

[[noreturn]] void fail_to_start(int error)
{
    if (error == ENOENT) {
        throw Failure(ExitStatus::failed, "plot needs gnuplot, which is not installed: install the "
                                          "package gnuplot-nox, or gnuplot");
    }
    throw Failure(ExitStatus::failed, fmt::format("cannot run gnuplot: {}", strerror(error)));
}

// With its own defaults: a user's set-up for other plots must not affect these. In its own process
// group: after an interrupt from the keyboard it would take the rows for commands.
pid_t start(const Pipe &input, const Pipe &output)
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    sigset_t reset;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.read_end, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.write_end, STDOUT_FILENO);
    posix_spawnattr_init(&attributes);
    sigemptyset(&reset);
    sigaddset(&reset, SIGPIPE);
    sigaddset(&reset, SIGXFSZ);
    posix_spawnattr_setsigdefault(&attributes, &reset);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    std::string words[] = {"gnuplot", "-d", "-"};
    char *arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, arguments[0], &actions, &attributes, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) {
        fail_to_start(error);
    }
    return pid;
}

// If this fails, gnuplot has failed, and reports it itself.
void feed(int pipe, std::string_view script)
{
    while (!script.empty()) {
        const ssize_t size = write(pipe, script.data(), script.size());
        if (size < 0 && errno != EINTR) {
            return;
        }
        script.remove_prefix(size < 0 ? 0 : static_cast<size_t>(size));
    }
}

std::string take(int pipe)
{
    std::string all;
    char piece[4096];
    for (;;) {
        const ssize_t size = read(pipe, piece, sizeof(piece));
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size <= 0) {
            return all;
        }
        all.append(piece, static_cast<size_t>(size));
    }
}

constexpr int NOT_FOUND = 127; // as in shells and emulators

// Returns the exit status, or -1 if a signal ended it.
int wait_for_end(pid_t pid)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        // A late stop does not end this wait.
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

std::string run_gnuplot(const std::string &script)
{
    Pipe input;
    Pipe output;
    const pid_t pid = start(input, output);
    Pipe::close_end(input.read_end);
    Pipe::close_end(output.write_end);
    feed(input.write_end, script); // it only draws at the end of the script
    Pipe::close_end(input.write_end);
    std::string result = take(output.read_end);
    const int status = wait_for_end(pid);
    if (status == NOT_FOUND) {
        fail_to_start(ENOENT);
    }
    if (status != 0 || result.empty()) {
        throw Failure(ExitStatus::failed, "gnuplot failed");
    }
    // gnuplot starts a drawing in text with a form feed, which is useless in a pipe.
    return result.front() == '\f' ? result.substr(1) : result;
}

// Searches where the call that starts it does.
std::string find_gnuplot()
{
    const char *variable = getenv("PATH");
    std::string_view folders = variable != nullptr ? variable : "/bin:/usr/bin";
    for (;;) {
        const size_t end = std::min(folders.find(':'), folders.size());
        std::string path = fmt::format("{}/gnuplot", end > 0 ? folders.substr(0, end) : ".");
        if (access(path.c_str(), X_OK) == 0) {
            return path;
        }
        if (end == folders.size()) {
            return "";
        }
        folders.remove_prefix(end + 1);
    }
}

// In single quotes only the quote itself is special.
std::string gnuplot_string(const std::string &text)
{
    std::string quoted = "'";
    for (const char character : text) {
        const bool control = static_cast<unsigned char>(character) < ' ' || character == '\x7F';
        quoted += control || character == '\'' ? '?' : character;
    }
    return quoted + "'";
}

} // namespace stmctl
