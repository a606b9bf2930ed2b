// Numbers as text.
#include "simulator/words/number.hpp"

#include <charconv>

namespace simulator
{

std::optional<int64_t> parse_number(std::string_view words, int64_t least, int64_t most)
{
    const bool negative = words.starts_with('-');
    words.remove_prefix(negative ? 1 : 0);
    const int base = words.starts_with("0x") ? 16 : 10;
    words.remove_prefix(base == 16 ? 2 : 0);
    uint64_t magnitude = 0;
    const char *end = words.data() + words.size();
    const auto [rest, error] = std::from_chars(words.data(), end, magnitude, base);
    if (error != std::errc() || rest != end || magnitude > INT64_MAX) {
        return std::nullopt;
    }
    const auto number = static_cast<int64_t>(negative ? -magnitude : magnitude);
    return number >= least && number <= most ? std::optional(number) : std::nullopt;
}

} // namespace simulator
