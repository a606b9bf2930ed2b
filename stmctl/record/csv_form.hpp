// How a CSV is put together, for programs that want it otherwise than the module shows it.
#pragma once

#include <string>
#include <string_view>

namespace stmctl
{

struct CsvForm {
    char separator = ';';
    bool closing = true; // one more behind the last field

    bool is_modules() const { return separator == ';' && closing; }
};

// The lines of a CSV in the module's form, in another one.
std::string in_form(const CsvForm &form, std::string_view lines);

// From the words of "--separator"; empty ones are those of nobody. Throws a Failure.
CsvForm parse_csv_form(const std::string &words);

} // namespace stmctl
