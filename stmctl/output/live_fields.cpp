// The fields of a live line, as many as fit on a terminal.
#include "stmctl/output/live_fields.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace stmctl
{

namespace
{

constexpr std::string_view BETWEEN = "  ";

const std::string &brief_of(const LiveField &field)
{
    return field.brief.empty() ? field.words : field.brief;
}

// Which of the fields fit, the best ranks first.
std::vector<bool> with_room(std::span<const LiveField> fields, size_t columns)
{
    std::vector<size_t> order;
    for (size_t i = 0; i < fields.size(); ++i) {
        order.push_back(i);
    }
    std::ranges::sort(order, {}, [&](size_t i) { return fields[i].rank; });
    std::vector<bool> chosen(fields.size());
    size_t used = 0;
    for (const size_t i : order) {
        const size_t size = brief_of(fields[i]).size() + (used > 0 ? BETWEEN.size() : 0);
        chosen[i] = used == 0 || used + size <= columns;
        used += chosen[i] ? size : 0;
    }
    return chosen;
}

} // namespace

std::string fitted_line(std::span<const LiveField> fields, int columns)
{
    const auto most = static_cast<size_t>(std::max(columns, 0));
    std::vector<std::string_view> words;
    for (const LiveField &field : fields) {
        words.emplace_back(field.words);
    }
    std::string line = fmt::format("{}", fmt::join(words, BETWEEN));
    if (line.size() <= most) {
        return line;
    }
    const std::vector<bool> chosen = with_room(fields, most);
    words.clear();
    for (size_t i = 0; i < fields.size(); ++i) {
        if (chosen[i]) {
            words.emplace_back(brief_of(fields[i]));
        }
    }
    return fmt::format("{}", fmt::join(words, BETWEEN));
}

std::string size_words(uint64_t bytes)
{
    constexpr double KIB = 1024;
    constexpr double MIB = KIB * KIB;
    const auto number = static_cast<double>(bytes);
    if (number < KIB) {
        return fmt::format("{} B", bytes);
    }
    return number < MIB ? fmt::format("{:.1f} KiB", number / KIB)
                        : fmt::format("{:.1f} MiB", number / MIB);
}

} // namespace stmctl
