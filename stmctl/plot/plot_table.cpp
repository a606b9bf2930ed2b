// The columns of a CSV that are to be drawn.
#include "stmctl/plot/plot_table.hpp"

#include "stmctl/output/printable.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/record/csv_line.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace stmctl
{

namespace
{

using Fields = std::vector<std::string_view>;

[[noreturn]] void fail(const std::string &source, const std::string &why)
{
    throw Failure(ExitStatus::failed, fmt::format("{}: {}", source, printable(why)));
}

std::string_view take_line(std::string_view &text)
{
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

std::optional<size_t> find_column(const Fields &header, std::string_view name)
{
    const auto found = std::ranges::find(header, name);
    return found == header.end() ? std::nullopt : std::optional<size_t>(found - header.begin());
}

size_t column(const Fields &header, const std::string &name, const std::string &source)
{
    if (const std::optional<size_t> at = find_column(header, name)) {
        return *at;
    }
    fail(source, fmt::format("no column '{}'; the columns are {}", name, fmt::join(header, ",")));
}

double number(const Fields &values, size_t at, const std::string &source, size_t line)
{
    double value = 0;
    const std::string_view text = at < values.size() ? values[at] : std::string_view();
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || stop != text.data() + text.size() || !std::isfinite(value)) {
        fail(source, fmt::format("line {}: '{}' is not a number", line, text));
    }
    return value;
}

} // namespace

std::optional<std::string> only_column(std::string_view text)
{
    const std::string_view first = take_line(text);
    if (!first.starts_with('"') || first.find('"', 1) == std::string_view::npos) {
        return {};
    }
    Fields names = csv_fields(first, separator_of(first));
    std::erase(names, "time");
    std::erase(names, "frame");
    return names.size() == 1 ? std::optional<std::string>(names[0]) : std::nullopt;
}

PlotTable read_plot_table(std::string_view text, const std::vector<std::string> &columns,
                          const std::string &source)
{
    if (text.empty()) {
        fail(source, "it is empty");
    }
    const std::string_view first = take_line(text);
    if (!first.starts_with('"')) {
        fail(source, "not a CSV with a header as --format csv writes it");
    }
    const char separator = separator_of(first);
    const Fields header = csv_fields(first, separator);
    const std::optional<size_t> time = find_column(header, "rel_t");
    PlotTable table{time ? "rel_t" : "line", columns, {}};
    std::vector<size_t> places;
    places.reserve(columns.size());
    for (const std::string &name : columns) {
        places.push_back(column(header, name, source));
    }
    for (size_t line = 2; !text.empty(); ++line) {
        const Fields values = csv_fields(take_line(text), separator);
        std::vector<double> row;
        row.push_back(time ? number(values, *time, source, line) : static_cast<double>(line - 1));
        for (const size_t place : places) {
            row.push_back(number(values, place, source, line));
        }
        table.rows.push_back(std::move(row));
    }
    if (table.rows.empty()) {
        fail(source, "it holds no records");
    }
    return table;
}

} // namespace stmctl
