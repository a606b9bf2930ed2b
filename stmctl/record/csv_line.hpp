// The module's CSV: names in quotes, numbers, each with a semicolon behind it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

// Cuts a line into its fields, without quotes. A last field may lack its separator.
std::vector<std::string_view> csv_fields(std::string_view line, char separator = ';');

// What stands between the fields below such a header: what stands behind its first one.
char separator_of(std::string_view header);

// "time";"nr";...
std::string csv_header(const std::vector<std::string> &names);

} // namespace stmctl
