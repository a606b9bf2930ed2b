// Numbers as users type them: decimal, or hexadecimal behind 0x.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace stmctl
{

// Throws a Failure that says what the number must be: "channel: a number from 0 to 7, not '8'".
uint32_t parse_number(const std::string &text, std::string_view what, uint32_t least,
                      uint32_t most);

// A number that settings send in hundredths, 0 to 655.35: such a one that the module sends exactly
// the two decimals that were typed. Further ones are cut off.
float parse_hundredths(const std::string &text, std::string_view what);

// Whether such a number has further ones that are not 0.
bool has_more_than_hundredths(std::string_view text);

} // namespace stmctl
