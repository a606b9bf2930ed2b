// Records as labelled text.
#include "stmctl/record/record_text.hpp"

#include <algorithm>
#include <charconv>

namespace stmctl
{

namespace
{

std::string_view end_of(const Column &column)
{
    return column.line == Line::ends_group ? "\n\n" : "\n";
}

// Text shows even unsigned numbers with a sign.
int64_t with_range_of(const Column &column, int32_t number)
{
    return column.sign == Sign::with ? int64_t{number} : int64_t{static_cast<uint32_t>(number)};
}

// Takes a column's line, and the blank line after it, from the front of a text. Any blanks between
// the label and the number are accepted.
bool take_line(std::string_view &text, const Column &column, int64_t &value)
{
    if (!text.starts_with(column.label)) {
        return false;
    }
    text.remove_prefix(column.label.size());
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    int32_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<size_t>(stop - text.data()));
    const std::string_view end = end_of(column);
    if (error != std::errc() || !text.starts_with(end)) {
        return false;
    }
    text.remove_prefix(end.size());
    value = with_range_of(column, number);
    return true;
}

std::string_view without_first_line(std::string_view text)
{
    const size_t end = text.find('\n');
    return text.substr(end == std::string_view::npos ? text.size() : end + 1);
}

// Where the last line begins, ignoring newlines at the end.
size_t last_line(std::string_view text)
{
    text.remove_suffix(text.size() - (text.find_last_not_of('\n') + 1));
    return text.rfind('\n') + 1; // 0 if it is the first
}

} // namespace

std::optional<Record> record_of_text(const Columns &columns, std::string_view text)
{
    Record record = {&columns, {}};
    for (size_t i = 0; i < columns.size(); ++i) {
        if (!take_line(text, columns[i], record.values[i])) {
            return {};
        }
    }
    return text.empty() ? std::optional<Record>(record) : std::nullopt;
}

std::optional<RecordFacts> facts_of_text(const Columns &columns, std::string_view text)
{
    int64_t rel_t = 0;
    int64_t buffered = 0;
    std::string_view back = text.substr(0, last_line(text)); // without the checksum
    back.remove_prefix(last_line(back));
    for (size_t i = 0; i < columns.rel_t(); ++i) {
        text = without_first_line(text);
    }
    if (!take_line(text, columns[columns.rel_t()], rel_t) ||
        !take_line(back, columns[columns.buffered()], buffered)) {
        return {};
    }
    return RecordFacts{true, static_cast<uint32_t>(rel_t), static_cast<uint32_t>(buffered)};
}

void put_text(const Record &record, TextBuffer &to)
{
    for (size_t i = 0; i < record.columns->size(); ++i) {
        const Column &column = (*record.columns)[i];
        to.put(column.label);
        to.put(int64_t{static_cast<int32_t>(record.values[i])});
        to.put(end_of(column));
    }
}

} // namespace stmctl
