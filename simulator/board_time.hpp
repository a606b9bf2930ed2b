// Times of the board in words: 2s, 2.5s, 1500ms, and a stretch of time, 2s..4s.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace simulator
{

// From a time on, and until another one, which is not in it.
struct TimeSpan {
    std::chrono::nanoseconds from{0};
    std::chrono::nanoseconds until{0};

    bool covers(std::chrono::nanoseconds time) const { return from <= time && time < until; }
};

// None if the words are no time. A time has nine decimals of its unit at most, and is not below 0.
std::optional<std::chrono::nanoseconds> parse_time(std::string_view words);

// None if the words are no two times, the second of them later than the first.
std::optional<TimeSpan> parse_time_span(std::string_view words);

} // namespace simulator
