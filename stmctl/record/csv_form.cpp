// The form of a CSV.
#include "stmctl/record/csv_form.hpp"

#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

namespace stmctl
{

std::string in_form(const CsvForm &form, std::string_view lines)
{
    if (form.is_modules()) {
        return std::string(lines);
    }
    std::string result;
    result.reserve(lines.size());
    for (size_t i = 0; i < lines.size(); ++i) {
        const bool closes = i + 1 < lines.size() && lines[i + 1] == '\n';
        if (lines[i] != ';') {
            result += lines[i];
        } else if (!closes || form.closing) {
            result += form.separator;
        }
    }
    return result;
}

CsvForm parse_csv_form(const std::string &words)
{
    if (words.empty()) {
        return {};
    }
    if (words == "," || words == ";") {
        return {words[0], false};
    }
    if (words == "tab" || words == "\t") {
        return {'\t', false};
    }
    throw Failure(ExitStatus::usage,
                  fmt::format("--separator must be ',', ';' or tab, not '{}'", words));
}

} // namespace stmctl
