// Numbers as users type them.
#include "stmctl/command_line/numbers.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <cfloat>
#include <charconv>
#include <cmath>

namespace stmctl
{

uint32_t parse_number(const std::string &text, std::string_view what, uint32_t least, uint32_t most)
{
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const char *begin = text.data() + (hexadecimal ? 2 : 0);
    const char *end = text.data() + text.size();
    uint32_t number = 0;
    const auto [stop, error] = std::from_chars(begin, end, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || number < least || number > most) {
        throw Failure(ExitStatus::usage, fmt::format("{} must be a number from {} to {}, not '{}'",
                                                     what, least, most, text));
    }
    return number;
}

float parse_hundredths(const std::string &text, std::string_view what)
{
    constexpr double MOST = 655.35; // beyond it only the low 16 bits would be sent
    constexpr double SLACK = 1e-9;  // what binary fractions may fall short of decimal ones by
    const char *end = text.data() + text.size();
    double number = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !(number >= 0) || !(number <= MOST)) {
        throw Failure(ExitStatus::usage,
                      fmt::format("{} must be a number from 0 to 655.35, not '{}'", what, text));
    }
    // The module multiplies in single precision and truncates: 655.35 would be sent as 655.34.
    const auto wanted = static_cast<uint32_t>(number * 100 + SLACK);
    auto sent = static_cast<float>(wanted / 100.0);
    while (stm_scale100(sent) < wanted) {
        sent = std::nextafter(sent, FLT_MAX);
    }
    return sent;
}

bool has_more_than_hundredths(std::string_view text)
{
    constexpr size_t KEPT = 3; // the point and two digits
    const size_t point = text.find('.');
    return point != std::string_view::npos && text.size() > point + KEPT &&
           text.find_first_not_of('0', point + KEPT) != std::string_view::npos;
}

} // namespace stmctl
