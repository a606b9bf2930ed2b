// The form of a CSV, for programs that need another one than the module's.
#pragma once

#include <string>
#include <string_view>

namespace stmctl
{

struct CsvForm {
    char separator = ';';
    bool closing = true; // one more after the last field

    bool is_modules() const { return separator == ';' && closing; }
};

// Converts lines of a CSV from the module's form.
std::string in_form(const CsvForm &form, std::string_view lines);

// From the value of "--separator"; empty if it was not given. Throws a Failure.
CsvForm parse_csv_form(const std::string &words);

} // namespace stmctl
