// Records in CSV.
#include "stmctl/record/record_csv.hpp"

#include "stmctl/process/failure.hpp"

#include <algorithm>
#include <charconv>

namespace stmctl
{

namespace
{

constexpr char LINE_END[] = ";\n";

// Takes a number, which must fit its type, and the semicolon after it from the front of a line.
template <typename Number>
bool take_number(std::string_view &line, int64_t &value)
{
    Number number = 0;
    const char *end = line.data() + line.size();
    const auto [stop, error] = std::from_chars(line.data(), end, number);
    if (error != std::errc() || stop == end || *stop != ';') {
        return false;
    }
    line.remove_prefix(static_cast<size_t>(stop + 1 - line.data()));
    value = number;
    return true;
}

bool take_value(std::string_view &line, Sign sign, int64_t &value)
{
    return sign == Sign::with ? take_number<int32_t>(line, value)
                              : take_number<uint32_t>(line, value);
}

std::string header_of(const Columns &columns, std::string_view Column::*name)
{
    std::string header;
    for (const Column &column : columns) {
        header.append("\"").append(column.*name).append("\";");
    }
    return header + '\n';
}

// Where the last field begins in a line that ends in a semicolon.
size_t last_field(std::string_view line)
{
    line.remove_suffix(std::min<size_t>(line.size(), 1));
    return line.rfind(';') + 1; // 0 if there is none
}

std::string_view without_first_fields(std::string_view line, size_t count)
{
    for (; count > 0; --count) {
        const size_t end = line.find(';');
        line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    }
    return line;
}

std::string_view without_last_fields(std::string_view line, size_t count)
{
    for (; count > 0; --count) {
        line = line.substr(0, last_field(line));
    }
    return line;
}

} // namespace

bool is_csv_header(const Columns &columns, std::string_view text)
{
    if (!text.starts_with('"')) {
        return false;
    }
    if (text != header_of(columns, &Column::name_read) &&
        text != header_of(columns, &Column::name_live)) {
        throw Failure(ExitStatus::failed, "the module's records have unexpected columns");
    }
    return true;
}

std::optional<Record> record_of_csv(const Columns &columns, std::string_view line)
{
    Record record = {&columns, {}};
    for (size_t i = 0; i < columns.size(); ++i) {
        if (!take_value(line, columns[i].sign, record.values[i])) {
            return {};
        }
    }
    return line == "\n" ? std::optional<Record>(record) : std::nullopt;
}

std::optional<RecordFacts> facts_of_csv(const Columns &columns, std::string_view line)
{
    int64_t rel_t = 0;
    int64_t buffered = 0;
    if (!line.ends_with(LINE_END)) {
        return {};
    }
    line.remove_suffix(1);
    std::string_view front = without_first_fields(line, columns.rel_t());
    std::string_view back = without_last_fields(line, columns.checksum() - columns.buffered());
    back.remove_prefix(last_field(back));
    if (!take_number<uint32_t>(front, rel_t) || !take_number<uint32_t>(back, buffered)) {
        return {};
    }
    return RecordFacts{true, static_cast<uint32_t>(rel_t), static_cast<uint32_t>(buffered)};
}

std::string csv_header(const Columns &columns)
{
    return header_of(columns, &Column::name);
}

void put_csv(const Record &record, TextBuffer &to)
{
    for (size_t i = 0; i < record.columns->size(); ++i) {
        to.put(record.values[i]);
        to.put(";");
    }
    to.put("\n");
}

} // namespace stmctl
