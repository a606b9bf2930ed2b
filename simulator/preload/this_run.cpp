// What this program was told about its run, its clock, and how it ends if something is wrong.
#include "simulator/preload/this_run.hpp"

#include "simulator/driver/transcript.hpp"
#include "simulator/driver/transcript_file.hpp"
#include "simulator/preload/first_standard_error.hpp"
#include "simulator/preload/program.hpp"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>

namespace simulator
{

constinit VirtualClock program_clock;

namespace
{

constexpr int OWN_FAILURE = 125;

// Changed once at most, before the board is there.
RunOptions &own_options()
{
    static auto *const taken = [] {
        auto *fresh = new RunOptions;
        if (!take_from_environment(*fresh)) {
            check("the VIRTUAL_BOARD_ variables are not as virtual-board sets them");
        }
        return fresh;
    }();
    return *taken;
}

} // namespace

void check(const std::string &error)
{
    if (error.empty()) {
        return;
    }
    const std::string line = "virtual-board: " + error + '\n';
    if (write(first_standard_error(), line.data(), line.size()) < 0) {
        // There is nowhere left to report it.
    }
    _exit(OWN_FAILURE);
}

const RunOptions &run_options()
{
    return own_options();
}

void take_options(const RunOptions &options)
{
    own_options() = options;
}

bool counts_time()
{
    static constinit std::atomic<int> known = -1;
    int counts = known.load(std::memory_order_relaxed);
    if (counts < 0) {
        const char *value = getenv(COUNT_TIME_VARIABLE);
        counts = value != nullptr && *value != '\0' ? 1 : 0;
        known.store(counts, std::memory_order_relaxed);
    }
    return counts != 0;
}

std::chrono::nanoseconds now()
{
    if (counts_time()) {
        return program_clock.elapsed();
    }
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// Sleeps, because a host that waits for its wire leaves the processor to others. Signals are
// blocked during the sleep, but it ends early when a stopped process is continued.
void sleep_until(std::chrono::nanoseconds end)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(end);
    const timespec time = {static_cast<time_t>(seconds.count()),
                           static_cast<long>((end - seconds).count())};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
    }
}

void note_exchange(const Exchange &exchange, std::chrono::nanoseconds time)
{
    const std::string &path = run_options().transcript;
    if (!path.empty()) {
        check(add_to_transcript(path, transcript_line(exchange, time)));
    }
}

} // namespace simulator
