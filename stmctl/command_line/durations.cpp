// Times as users type them.
#include "stmctl/command_line/durations.hpp"

#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace stmctl
{

namespace
{

struct Unit {
    std::string_view name;
    double milliseconds;
};

constexpr Unit UNITS[] = {
    {"", 1000}, {"s", 1000}, {"m", 60'000}, {"h", 3'600'000}, {"ms", 1},
};

} // namespace

std::chrono::milliseconds parse_duration(const std::string &text, std::string_view what)
{
    constexpr double MOST_MS = 1e12;
    constexpr double SLACK_MS = 1e-3; // what binary fractions may exceed decimal ones by
    const char *end = text.data() + text.size();
    double number = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    const std::string_view rest(stop, static_cast<size_t>(end - stop));
    const auto *unit = std::ranges::find(UNITS, rest, &Unit::name);
    const bool known = error == std::errc() && unit != std::end(UNITS);
    const double time = known ? number * unit->milliseconds : 0;
    if (!(time > 0) || !(time <= MOST_MS)) {
        throw Failure(ExitStatus::usage,
                      fmt::format("{} must be a time such as 90, 90s, 5m, 1.5h or 500ms, above 0 "
                                  "and at most 1000000000 s, not '{}'",
                                  what, text));
    }
    return std::chrono::milliseconds(std::llround(std::max(std::ceil(time - SLACK_MS), 1.0)));
}

} // namespace stmctl
