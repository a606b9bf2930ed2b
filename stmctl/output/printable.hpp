// Makes texts from the co-processor safe to show: characters that do not print become "\x1B".
#pragma once

#include <string>
#include <string_view>

namespace stmctl
{

std::string printable(std::string_view text);

// The same for a line, which ends in a newline even if the text does not.
std::string printable_line(std::string_view text);

} // namespace stmctl
