// Times of the board as text.
#include "simulator/words/board_time.hpp"

#include "simulator/words/number.hpp"

#include <algorithm>
#include <cstdint>

namespace simulator
{

namespace
{

constexpr size_t MOST_DECIMALS = 9;        // the smallest time is a billionth of a second
constexpr int64_t MOST = 1'000'000'000;    // seconds or milliseconds
constexpr int64_t BILLION = 1'000'000'000; // 10 to the power of MOST_DECIMALS

bool are_digits(std::string_view words)
{
    return !words.empty() && words.find_first_not_of("0123456789") == std::string_view::npos;
}

// The digits after a decimal point, as billionths.
std::optional<int64_t> parse_billionths(std::string_view digits)
{
    if (!are_digits(digits) || digits.size() > MOST_DECIMALS) {
        return std::nullopt;
    }
    int64_t billionths = *parse_number(digits, 0, BILLION);
    for (size_t i = digits.size(); i < MOST_DECIMALS; ++i) {
        billionths *= 10;
    }
    return billionths;
}

} // namespace

std::optional<std::chrono::nanoseconds> parse_time(std::string_view words)
{
    const bool milli = words.ends_with("ms");
    if (!milli && !words.ends_with('s')) {
        return std::nullopt;
    }
    words.remove_suffix(milli ? 2 : 1);
    const size_t point = std::min(words.find('.'), words.size());
    const std::string_view units = words.substr(0, point);
    const auto whole = are_digits(units) ? parse_number(units, 0, MOST) : std::nullopt;
    const auto part = point == words.size() ? std::optional<int64_t>(0)
                                            : parse_billionths(words.substr(point + 1));
    if (!whole || !part) {
        return std::nullopt;
    }
    return std::chrono::nanoseconds((*whole * BILLION + *part) / (milli ? 1000 : 1));
}

std::optional<TimeSpan> parse_time_span(std::string_view words)
{
    constexpr std::string_view BETWEEN = "..";
    const size_t between = words.find(BETWEEN);
    if (between == std::string_view::npos) {
        return std::nullopt;
    }
    const auto from = parse_time(words.substr(0, between));
    const auto until = parse_time(words.substr(between + BETWEEN.size()));
    if (!from || !until || *until <= *from) {
        return std::nullopt;
    }
    return TimeSpan{*from, *until};
}

} // namespace simulator
