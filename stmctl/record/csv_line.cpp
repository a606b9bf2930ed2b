// The module's CSV.
#include "stmctl/record/csv_line.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace stmctl
{

namespace
{

std::string_view without_quotes(std::string_view field)
{
    const bool quoted = field.size() >= 2 && field.front() == '"' && field.back() == '"';
    return quoted ? field.substr(1, field.size() - 2) : field;
}

} // namespace

void csv_fields(std::string_view line, std::vector<std::string_view> &fields)
{
    fields.clear();
    line = line.substr(0, line.find_first_of("\r\n"));
    while (!line.empty()) {
        const size_t end = std::min(line.find(';'), line.size());
        fields.push_back(without_quotes(line.substr(0, end)));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
}

std::vector<std::string_view> csv_fields(std::string_view line)
{
    std::vector<std::string_view> fields;
    csv_fields(line, fields);
    return fields;
}

std::string csv_header(const std::vector<std::string> &names)
{
    std::string line;
    for (const std::string &name : names) {
        line += fmt::format("\"{}\";", name);
    }
    return line + '\n';
}

std::string host_time()
{
    constexpr int64_t SECOND = 1'000'000;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const int64_t us = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return fmt::format("{}.{:06}", us / SECOND, us % SECOND);
}

} // namespace stmctl
