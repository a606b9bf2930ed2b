// The user's wish to stop a run.
#include "stmctl/process/stop.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/process/exit_status.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <optional>
#include <string>

namespace stmctl
{

namespace
{

constexpr int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t signals_seen = 0;
volatile sig_atomic_t interrupts_seen = 0; // those from the keyboard
bool stop_typed = false;
bool input_ended = false;
bool all_input = false;                                         // is ours
std::string typed;                                              // the line that is still incomplete
std::optional<std::chrono::steady_clock::time_point> next_look; // none: at once
void (*before_end)() = nullptr; // of the process, on the second interrupt

// Signals other than those from the keyboard may come twice unintentionally, for instance when a
// terminal is closed. They interrupt blocking calls, but one that comes just before a write would
// not, and the write would block forever. So the alarm repeats it.
void on_signal(int signal_number)
{
    signals_seen = 1;
    if (signal_number != SIGINT) {
        alarm(1);
        return;
    }
    interrupts_seen = interrupts_seen + 1;
    if (interrupts_seen > 1) {
        before_end();
        _exit(static_cast<int>(ExitStatus::stopped));
    }
}

// A signal that was ignored when we started, as in background jobs of shells, stays ignored.
void handle(int signal_number)
{
    struct sigaction action = {};
    sigaction(signal_number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) {
        return;
    }
    action = {};
    action.sa_handler = on_signal;
    // After an interrupt from the keyboard, output is still written in full, however long its
    // reader takes, while waits do end. Other signals end all blocking calls.
    action.sa_flags = signal_number == SIGINT ? SA_RESTART : 0;
    sigemptyset(&action.sa_mask);
    sigaction(signal_number, &action, nullptr);
}

// Copies the first bytes available in a file, a socket or a pipe, without consuming them. Returns
// their number.
ssize_t peek_input(char *bytes, size_t size)
{
    const ssize_t in_file = pread(STDIN_FILENO, bytes, size, lseek(STDIN_FILENO, 0, SEEK_CUR));
    const ssize_t peeked =
        in_file < 0 ? recv(STDIN_FILENO, bytes, size, MSG_PEEK | MSG_DONTWAIT) : in_file;
    int copy[2];
    if (peeked >= 0 || pipe2(copy, O_CLOEXEC | O_NONBLOCK) != 0) {
        return peeked;
    }
    const ssize_t in_pipe = tee(STDIN_FILENO, copy[1], size, SPLICE_F_NONBLOCK);
    const ssize_t copied = in_pipe > 0 ? read(copy[0], bytes, size) : 0;
    close(copy[0]);
    close(copy[1]);
    return copied;
}

void take_first_line_if_stop()
{
    constexpr size_t SIZE = sizeof(STM_STOP_LINE) - 1;
    char first[SIZE];
    if (peek_input(first, SIZE) == static_cast<ssize_t>(SIZE) &&
        memcmp(first, STM_STOP_LINE, SIZE) == 0) {
        stop_typed = read(STDIN_FILENO, first, SIZE) > 0;
    }
}

void take_lines()
{
    for (size_t end = 0; (end = typed.find('\n')) != std::string::npos;) {
        stop_typed = stop_typed || typed.compare(0, end + 1, STM_STOP_LINE) == 0;
        typed.erase(0, end + 1);
    }
    constexpr size_t LONGEST_KEPT = 64; // a longer line is not a stop line
    typed.resize(std::min(typed.size(), LONGEST_KEPT));
}

void read_input()
{
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, 0) <= 0) {
        return;
    }
    char piece[4096];
    const ssize_t size = read(STDIN_FILENO, piece, sizeof(piece));
    if (size > 0) {
        typed.append(piece, static_cast<size_t>(size));
        take_lines();
    } else if (size == 0 || (errno != EINTR && errno != EAGAIN)) {
        input_ended = true;
    }
}

// A look takes two to four system calls; a poll by the module often takes less time than one.
bool is_time_to_look()
{
    constexpr std::chrono::milliseconds INTERVAL(10);
    const auto now = std::chrono::steady_clock::now();
    if (next_look && now < *next_look) {
        return false;
    }
    next_look = now + INTERVAL;
    return true;
}

void look_at_input()
{
    if (isatty(STDIN_FILENO) == 0) {
        all_input ? read_input() : take_first_line_if_stop();
    } else if (tcgetpgrp(STDIN_FILENO) == getpgrp()) {
        read_input(); // it would suspend a background job
    }
}

} // namespace

void watch_for_stop(void (*before_abrupt_end)())
{
    before_end = before_abrupt_end;
    for (const int signal_number : SIGNALS) {
        handle(signal_number);
    }
    struct sigaction action = {};
    action.sa_handler = [](int) { alarm(1); };
    sigemptyset(&action.sa_mask);
    sigaction(SIGALRM, &action, nullptr);
}

void take_all_input()
{
    all_input = true;
    next_look.reset();
}

bool interrupted()
{
    return signals_seen != 0;
}

bool stop_requested()
{
    if (!interrupted() && !stop_typed && !input_ended && is_time_to_look()) {
        look_at_input();
    }
    return interrupted() || stop_typed;
}

bool wait_unless_stopped(std::chrono::milliseconds time)
{
    constexpr std::chrono::milliseconds STEP(50);
    for (; time.count() > 0 && !stop_requested(); time -= STEP) {
        usleep(static_cast<useconds_t>(std::chrono::microseconds(std::min(time, STEP)).count()));
    }
    return !stop_requested();
}

bool wait_for_input(int descriptor)
{
    // An interrupt between the check and the wait would be missed: so only the wait lets it in.
    sigset_t ours;
    sigset_t before;
    sigemptyset(&ours);
    for (const int signal_number : SIGNALS) {
        sigaddset(&ours, signal_number);
    }
    sigprocmask(SIG_BLOCK, &ours, &before);
    pollfd input = {descriptor, POLLIN, 0};
    while (!interrupted() && ppoll(&input, 1, nullptr, &before) < 0 && errno == EINTR) {
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return !interrupted();
}

} // namespace stmctl
