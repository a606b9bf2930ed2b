// How long a run goes on.
#include "stmctl/stream/run.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace stmctl
{

using std::chrono::steady_clock;

namespace
{

// Empty words are none that were given.
std::optional<std::chrono::milliseconds> parse_seconds(const std::string &words, const char *option)
{
    constexpr double MOST = 1e9;
    if (words.empty()) {
        return {};
    }
    double seconds = 0;
    const char *end = words.data() + words.size();
    const auto [stop, error] =
        std::from_chars(words.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !(seconds > 0) || !(seconds <= MOST)) {
        throw Failure(
            ExitStatus::usage,
            fmt::format("{}: seconds above 0, at most 1000000000, not '{}'", option, words));
    }
    return std::chrono::milliseconds(std::llround(std::ceil(seconds * 1000)));
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
    return parse_seconds(duration, "--duration");
}

std::optional<std::chrono::milliseconds> RunOptions::silence_given() const
{
    return parse_seconds(silence, "--silence");
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
             "after a failure, or when nothing comes, synchronise and ask again");
}

void add_judgement(CLI::App &command, RunOptions &options, const char *silence_default)
{
    add_option(command, "--silence", "SECONDS", options.silence, silence_default);
    add_flag(command, "--fail-on-loss", options.fail_on_loss,
             "status 1 if any record is lost, rejected or overflowing, or after a silence");
    add_option(command, "--summary", "FILE", options.summary,
               "write what came, was lost and so on as JSON", names_of_files());
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
