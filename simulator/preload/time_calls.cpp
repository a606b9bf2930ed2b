// Intercepts the calls that spend time or read a clock, for programs whose time is counted: a wait
// ends at once, and the clock is advanced by its length. Nothing here allocates or locks: signal
// handlers and allocators make these calls, too.
#include "simulator/preload/program.hpp"
#include "simulator/preload/real_calls.hpp"

#include <poll.h>
#include <sys/select.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>

namespace
{

using simulator::counts_time;
using simulator::program_clock;
using simulator::RealCall;
using std::chrono::nanoseconds;

// Times as passed by 32-bit programs that were built for times beyond 2038.
struct WideTimespec {
    int64_t tv_sec;
    int32_t tv_nsec;
    int32_t padding;
};
struct WideTimeval {
    int64_t tv_sec;
    int64_t tv_usec;
};

constinit RealCall<int(useconds_t)> real_usleep("usleep");
constinit RealCall<int(const timespec *, timespec *)> real_nanosleep("nanosleep");
constinit RealCall<int(clockid_t, int, const timespec *, timespec *)>
    real_clock_nanosleep("clock_nanosleep");
constinit RealCall<int(clockid_t, timespec *)> real_clock_gettime("clock_gettime");
constinit RealCall<int(pollfd *, nfds_t, int)> real_poll("poll");
constinit RealCall<int(int, fd_set *, fd_set *, fd_set *, timeval *)> real_select("select");

constexpr int64_t NANOSECONDS_PER_SECOND = 1'000'000'000;
constexpr int64_t LONGEST_WAIT_S = 1'000'000'000; // 31 years

int pass(nanoseconds time)
{
    program_clock.advance(std::max(time, nanoseconds(0)));
    return 0;
}

template <typename Time>
nanoseconds duration(const Time &time)
{
    const int64_t seconds = std::min(static_cast<int64_t>(time.tv_sec), 8 * LONGEST_WAIT_S);
    return std::chrono::seconds(seconds) + nanoseconds(time.tv_nsec);
}

template <typename Time>
Time split(nanoseconds time)
{
    Time parts = {};
    parts.tv_sec = static_cast<decltype(parts.tv_sec)>(time.count() / NANOSECONDS_PER_SECOND);
    parts.tv_nsec = static_cast<decltype(parts.tv_nsec)>(time.count() % NANOSECONDS_PER_SECOND);
    return parts;
}

// Invalid times go to the real call, which reports the error.
template <typename Time>
bool is_valid(const Time *time)
{
    return time != nullptr && time->tv_sec >= 0 && time->tv_nsec >= 0 &&
           time->tv_nsec < NANOSECONDS_PER_SECOND;
}

bool can_be_slept_on(clockid_t clock)
{
    return clock == CLOCK_REALTIME || clock == CLOCK_MONOTONIC || clock == CLOCK_BOOTTIME ||
           clock == CLOCK_TAI;
}

// Clocks of processor time run on their own: work is not counted.
bool is_counted(clockid_t clock)
{
    return can_be_slept_on(clock) || clock == CLOCK_MONOTONIC_RAW ||
           clock == CLOCK_REALTIME_COARSE || clock == CLOCK_MONOTONIC_COARSE;
}

// What a counted clock showed when the program started: fixed when it is first read.
nanoseconds clock_start(clockid_t clock)
{
    constexpr int64_t UNKNOWN = std::numeric_limits<int64_t>::min();
    constexpr size_t CLOCKS = CLOCK_TAI + 1;
    static constinit std::atomic<int64_t> starts[CLOCKS] = {UNKNOWN, UNKNOWN, UNKNOWN, UNKNOWN,
                                                            UNKNOWN, UNKNOWN, UNKNOWN, UNKNOWN,
                                                            UNKNOWN, UNKNOWN, UNKNOWN, UNKNOWN};
    std::atomic<int64_t> &start = starts[clock];
    int64_t known = UNKNOWN;
    timespec time = {};
    if (start.load() == UNKNOWN && real_clock_gettime(clock, &time) == 0) {
        start.compare_exchange_strong(known, (duration(time) - program_clock.elapsed()).count());
    }
    return nanoseconds(start.load());
}

template <typename Time>
Time counted_time(clockid_t clock)
{
    return split<Time>(clock_start(clock) + program_clock.elapsed());
}

template <typename Time>
int counted_sleep(clockid_t clock, int flags, const Time &time)
{
    const bool until = (flags & TIMER_ABSTIME) != 0;
    const nanoseconds passed =
        until ? clock_start(clock) + program_clock.elapsed() : nanoseconds(0);
    return pass(duration(time) - passed);
}

// Whatever is ready is ready now; otherwise the whole time-out passes.
template <typename Time>
int counted_select(int count, fd_set *reading, fd_set *writing, fd_set *failing, Time *timeout)
{
    timeval at_once = {};
    const int ready = real_select(count, reading, writing, failing, &at_once);
    if (ready == 0) {
        pass(std::chrono::seconds(std::min<int64_t>(timeout->tv_sec, LONGEST_WAIT_S)) +
             std::chrono::microseconds(timeout->tv_usec));
        *timeout = {};
    }
    return ready;
}

template <typename Time>
bool is_timeout(const Time *timeout)
{
    return timeout != nullptr && timeout->tv_sec >= 0 && timeout->tv_usec >= 0;
}

} // namespace

EXPORTED int usleep(useconds_t microseconds)
{
    return counts_time() ? pass(std::chrono::microseconds(microseconds))
                         : real_usleep(microseconds);
}

EXPORTED int nanosleep(const timespec *time, timespec *rest)
{
    return counts_time() && is_valid(time) ? counted_sleep(CLOCK_REALTIME, 0, *time)
                                           : real_nanosleep(time, rest);
}

EXPORTED int clock_nanosleep(clockid_t clock, int flags, const timespec *time, timespec *rest)
{
    return counts_time() && can_be_slept_on(clock) && is_valid(time)
               ? counted_sleep(clock, flags, *time)
               : real_clock_nanosleep(clock, flags, time, rest);
}

EXPORTED int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    if (!counts_time() || !is_counted(clock)) {
        return real_clock_gettime(clock, time);
    }
    *time = counted_time<timespec>(clock);
    return 0;
}

EXPORTED int poll(pollfd *files, nfds_t count, int timeout_ms)
{
    if (!counts_time() || timeout_ms <= 0) {
        return real_poll(files, count, timeout_ms);
    }
    const int ready = real_poll(files, count, 0);
    return ready != 0 ? ready : pass(std::chrono::milliseconds(timeout_ms));
}

EXPORTED int select(int count, fd_set *reading, fd_set *writing, fd_set *failing, timeval *timeout)
{
    return counts_time() && is_timeout(timeout)
               ? counted_select(count, reading, writing, failing, timeout)
               : real_select(count, reading, writing, failing, timeout);
}

#if __SIZEOF_LONG__ == 4

namespace
{

constinit RealCall<int(const WideTimespec *, WideTimespec *)> real_nanosleep64("__nanosleep64");
constinit RealCall<int(clockid_t, int, const WideTimespec *, WideTimespec *)>
    real_clock_nanosleep64("__clock_nanosleep_time64");
constinit RealCall<int(clockid_t, WideTimespec *)> real_clock_gettime64("__clock_gettime64");
constinit RealCall<int(int, fd_set *, fd_set *, fd_set *, WideTimeval *)>
    real_select64("__select64");

} // namespace

EXPORTED int __nanosleep64(const WideTimespec *time, WideTimespec *rest)
{
    return counts_time() && is_valid(time) ? counted_sleep(CLOCK_REALTIME, 0, *time)
                                           : real_nanosleep64(time, rest);
}

EXPORTED int __clock_nanosleep_time64(clockid_t clock, int flags, const WideTimespec *time,
                                      WideTimespec *rest)
{
    return counts_time() && can_be_slept_on(clock) && is_valid(time)
               ? counted_sleep(clock, flags, *time)
               : real_clock_nanosleep64(clock, flags, time, rest);
}

EXPORTED int __clock_gettime64(clockid_t clock, WideTimespec *time) noexcept
{
    if (!counts_time() || !is_counted(clock)) {
        return real_clock_gettime64(clock, time);
    }
    *time = counted_time<WideTimespec>(clock);
    return 0;
}

EXPORTED int __select64(int count, fd_set *reading, fd_set *writing, fd_set *failing,
                        WideTimeval *timeout)
{
    return counts_time() && is_timeout(timeout)
               ? counted_select(count, reading, writing, failing, timeout)
               : real_select64(count, reading, writing, failing, timeout);
}

#endif
