// How long a run lasts.
#include "stmctl/stream/run.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/durations.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/stop.hpp"

#include <algorithm>
#include <utility>

namespace stmctl
{

using std::chrono::steady_clock;

namespace
{

// Empty words mean that the option was not given.
std::optional<std::chrono::milliseconds> time_if_given(const std::string &words, const char *option)
{
    return words.empty() ? std::nullopt : std::optional(parse_duration(words, option));
}

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
    return time_if_given(duration, "--duration");
}

std::optional<std::chrono::milliseconds> RunOptions::silence_given() const
{
    return time_if_given(silence, "--silence");
}

void add_run_limits(CLI::App &command, RunOptions &options, const char *counted)
{
    add_option(command, "-n,--count", "COUNT", options.count, counted);
    add_duration(command, options);
}

void add_duration(CLI::App &command, RunOptions &options)
{
    add_option(command, "--duration", "TIME", options.duration,
               "stop after this time: 90, 90s, 5m, 1.5h, 500ms");
}

void add_keep_going(CLI::App &command, RunOptions &options)
{
    add_flag(command, "--keep-going", options.keep_going, "ask again after a failure or a silence");
}

void add_judgement(CLI::App &command, RunOptions &options, const char *silence_default)
{
    add_option(command, "--silence", "TIME", options.silence, silence_default);
    add_flag(command, "--fail-on-loss", options.fail_on_loss,
             "exit with status 1 after any loss or silence");
    add_option(command, "--summary", "FILE", options.summary,
               "write the final counts to this file as JSON", names_of_files());
}

Run::Run(std::optional<std::chrono::milliseconds> time, Tick tick) : tick_(std::move(tick))
{
    if (time) {
        end_ = steady_clock::now() + *time;
    }
    take_all_input();
}

bool Run::over()
{
    const Time now = steady_clock::now();
    if (tick_) {
        tick_(now);
    }
    return finished_ || given_up_ || output_failed() || (end_ && now >= *end_);
}

Wish Run::ask()
{
    if (over() || std::exchange(interrupted_, false)) {
        return Wish::end;
    }
    return ask_user();
}

bool Run::pause(std::chrono::milliseconds time)
{
    constexpr std::chrono::milliseconds STEP(50);
    const Time end = steady_clock::now() + time;
    while (!over() && !stop_requested()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
        if (left.count() <= 0) {
            return true;
        }
        wait_unless_stopped(std::min(left, STEP));
    }
    return false;
}

} // namespace stmctl
