// The module's CSV.
#include "stmctl/record/csv_line.hpp"

#include <fmt/format.h>

#include <algorithm>

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

std::vector<std::string_view> csv_fields(std::string_view line, char separator)
{
    std::vector<std::string_view> fields;
    line = line.substr(0, std::min(line.find('\r'), line.find('\n')));
    while (!line.empty()) {
        const size_t end = std::min(line.find(separator), line.size());
        fields.push_back(without_quotes(line.substr(0, end)));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    return fields;
}

char separator_of(std::string_view header)
{
    const size_t quote = header.find('"', 1);
    const size_t behind = quote == std::string_view::npos ? quote : quote + 1;
    const bool known = behind < header.size() && (header[behind] == ',' || header[behind] == '\t');
    return known ? header[behind] : ';';
}

std::string csv_header(const std::vector<std::string> &names)
{
    std::string line;
    for (const std::string &name : names) {
        line += fmt::format("\"{}\";", name);
    }
    return line + '\n';
}

} // namespace stmctl
