// When the next line about a stream is due, and how fast records came since the previous one.
#include "stmctl/stream/pace.hpp"

#include "stmctl/output/terminal.hpp"

#include <fmt/format.h>

#include <utility>

namespace stmctl
{

namespace
{

double seconds(std::chrono::steady_clock::duration time)
{
    return std::chrono::duration<double>(time).count();
}

} // namespace

std::string Pace::take(uint64_t records, Time now)
{
    const auto fresh = static_cast<double>(records - std::exchange(records_, records));
    return fmt::format("{:.0f}/s", fresh / seconds(now - std::exchange(last_, now)));
}

std::string Pace::elapsed(Time now) const
{
    return clock_words(seconds(now - start_));
}

} // namespace stmctl
