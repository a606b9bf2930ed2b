// Texts of the co-processor's, made safe to show: what is no printing character becomes "\x1B".
#pragma once

#include <string>
#include <string_view>

namespace stmctl
{

std::string printable(std::string_view text);

// The same for a line, which ends in a newline even if the text does not.
std::string printable_line(std::string_view text);

} // namespace stmctl
