// Times of the board as text: 2s, 2.5s, 1500ms, and a span of time, 2s..4s.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace simulator
{

// From one time up to another, which is excluded.
struct TimeSpan {
    std::chrono::nanoseconds from{0};
    std::chrono::nanoseconds until{0};

    bool covers(std::chrono::nanoseconds time) const { return from <= time && time < until; }
};

// None if the words are not a time. A time has at most nine decimals and is not negative.
std::optional<std::chrono::nanoseconds> parse_time(std::string_view words);

// None if the words are not two times, the second later than the first.
std::optional<TimeSpan> parse_time_span(std::string_view words);

} // namespace simulator
