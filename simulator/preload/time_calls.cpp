// Stands in front of the calls that spend time or look at the clock, for programs whose time is
// counted: a wait ends at once and the clock is put forward by it.
#include "simulator/preload/real_calls.hpp"
#include "simulator/preload/session.hpp"

#include <poll.h>
#include <sys/select.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <mutex>

namespace
{

using simulator::RealCall;
using simulator::settings;
using std::chrono::nanoseconds;

constinit RealCall<int(useconds_t)> real_usleep("usleep");
constinit RealCall<int(const timespec *, timespec *)> real_nanosleep("nanosleep");
constinit RealCall<int(clockid_t, int, const timespec *, timespec *)>
    real_clock_nanosleep("clock_nanosleep");
constinit RealCall<int(clockid_t, timespec *)> real_clock_gettime("clock_gettime");
constinit RealCall<int(pollfd *, nfds_t, int)> real_poll("poll");
constinit RealCall<int(int, fd_set *, fd_set *, fd_set *, timeval *)> real_select("select");

constexpr long NANOSECONDS_PER_SECOND = 1'000'000'000;

std::mutex clock_lock;

nanoseconds elapsed()
{
    const std::scoped_lock lock(clock_lock);
    return simulator::program_clock().elapsed();
}

int pass(nanoseconds time)
{
    const std::scoped_lock lock(clock_lock);
    if (time > nanoseconds(0)) {
        simulator::program_clock().advance(time);
    }
    return 0;
}

nanoseconds duration(const timespec &time)
{
    return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

timespec split(nanoseconds time)
{
    timespec parts = {};
    parts.tv_sec = static_cast<time_t>(time.count() / NANOSECONDS_PER_SECOND);
    parts.tv_nsec = static_cast<long>(time.count() % NANOSECONDS_PER_SECOND);
    return parts;
}

bool is_valid(const timespec *time)
{
    return time->tv_sec >= 0 && time->tv_nsec >= 0 && time->tv_nsec < NANOSECONDS_PER_SECOND;
}

// Clocks of processor time go on by themselves: work is not counted.
bool is_counted(clockid_t clock)
{
    return clock >= 0 && clock != CLOCK_PROCESS_CPUTIME_ID && clock != CLOCK_THREAD_CPUTIME_ID;
}

// What a clock showed when the program looked for the first time.
nanoseconds clock_start(clockid_t clock)
{
    constexpr clockid_t CLOCKS = 16;
    static nanoseconds starts[CLOCKS];
    static bool known[CLOCKS];
    const std::scoped_lock lock(clock_lock);
    if (!known[clock]) {
        timespec time = {};
        real_clock_gettime(clock, &time);
        starts[clock] = duration(time) - simulator::program_clock().elapsed();
        known[clock] = true;
    }
    return starts[clock];
}

} // namespace

EXPORTED int usleep(useconds_t microseconds)
{
    return settings().counts_time ? pass(std::chrono::microseconds(microseconds))
                                  : real_usleep(microseconds);
}

EXPORTED int nanosleep(const timespec *time, timespec *rest)
{
    return settings().counts_time && is_valid(time) ? pass(duration(*time))
                                                    : real_nanosleep(time, rest);
}

EXPORTED int clock_nanosleep(clockid_t clock, int flags, const timespec *time, timespec *rest)
{
    if (!settings().counts_time || !is_counted(clock) || !is_valid(time)) {
        return real_clock_nanosleep(clock, flags, time, rest);
    }
    const bool until = (flags & TIMER_ABSTIME) != 0;
    return pass(until ? duration(*time) - clock_start(clock) - elapsed() : duration(*time));
}

EXPORTED int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    timespec now = {};
    if (!settings().counts_time || !is_counted(clock) || real_clock_gettime(clock, &now) != 0) {
        return real_clock_gettime(clock, time);
    }
    *time = split(clock_start(clock) + elapsed());
    return 0;
}

// Whatever is ready is ready now; else the whole time-out passes.

EXPORTED int poll(pollfd *files, nfds_t count, int timeout_ms)
{
    if (!settings().counts_time || timeout_ms <= 0) {
        return real_poll(files, count, timeout_ms);
    }
    const int ready = real_poll(files, count, 0);
    return ready != 0 ? ready : pass(std::chrono::milliseconds(timeout_ms));
}

EXPORTED int select(int count, fd_set *reading, fd_set *writing, fd_set *failing, timeval *timeout)
{
    if (!settings().counts_time || timeout == nullptr) {
        return real_select(count, reading, writing, failing, timeout);
    }
    const nanoseconds time =
        std::chrono::seconds(timeout->tv_sec) + std::chrono::microseconds(timeout->tv_usec);
    *timeout = {};
    const int ready = real_select(count, reading, writing, failing, timeout);
    return ready != 0 ? ready : pass(time);
}
