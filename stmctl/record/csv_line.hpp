// The module's CSV: names in quotes and numbers, each followed by a semicolon.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

// Cuts a line into its fields, without quotes. A last field may lack its separator.
std::vector<std::string_view> csv_fields(std::string_view line, char separator = ';');

// The separator of the fields below such a header: the character after its first field.
char separator_of(std::string_view header);

// "time";"nr";...
std::string csv_header(const std::vector<std::string> &names);

} // namespace stmctl
