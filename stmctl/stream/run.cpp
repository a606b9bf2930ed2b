// How long a run goes on.
#include "stmctl/stream/run.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstring>

namespace stmctl
{

using std::chrono::steady_clock;

namespace
{

Run *current = nullptr; // the callback is a plain function

} // namespace

std::optional<uint32_t> RunOptions::wanted() const
{
    constexpr uint32_t MOST = 0x7FFFFFFF;
    if (count.empty()) {
        return {};
    }
    return parse_number(count, "-n", 1, MOST);
}

std::optional<std::chrono::milliseconds> RunOptions::time() const
{
    constexpr double MOST = 1e9;
    if (duration.empty()) {
        return {};
    }
    double seconds = 0;
    const char *end = duration.data() + duration.size();
    const auto [stop, error] =
        std::from_chars(duration.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !(seconds > 0) || !(seconds <= MOST)) {
        throw Failure(
            ExitStatus::usage,
            fmt::format("--duration: seconds above 0, at most 1000000000, not '{}'", duration));
    }
    return std::chrono::milliseconds(std::llround(std::ceil(seconds * 1000)));
}

void add_run_limits(CLI::App &command, RunOptions &options, const char *counted)
{
    add_option(command, "-n,--count", "COUNT", options.count, counted);
    add_duration(command, options);
}

void add_duration(CLI::App &command, RunOptions &options)
{
    add_option(command, "--duration", "SECONDS", options.duration, "end after so many seconds");
}

void add_keep_going(CLI::App &command, RunOptions &options)
{
    add_flag(command, "--keep-going", options.keep_going,
             "after a failure wait, synchronise and ask again; never give up");
}

Run::Run(std::optional<std::chrono::milliseconds> time, Tick tick) : tick_(std::move(tick))
{
    if (time) {
        end_ = steady_clock::now() + *time;
    }
    current = this;
    take_all_input();
}

Run::~Run()
{
    current = nullptr;
}

bool Run::over()
{
    const steady_clock::time_point now = steady_clock::now();
    if (tick_) {
        tick_(now);
    }
    return finished_ || given_up_ || output_failed() || (end_ && now >= *end_);
}

int poll_run(char *line)
{
    if (!current->over()) {
        return poll_for_stop(line);
    }
    memcpy(line, STM_STOP_LINE, sizeof(STM_STOP_LINE));
    return 1;
}

} // namespace stmctl
