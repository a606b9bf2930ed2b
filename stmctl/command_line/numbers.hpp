// Numbers as users type them: decimal, or hexadecimal with 0x.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace stmctl
{

// Throws a Failure that says what the number must be: "channel must be a number from 0 to 7, not
// '8'".
uint32_t parse_number(const std::string &text, std::string_view what, uint32_t least,
                      uint32_t most);

// A number that settings send in hundredths, 0 to 655.35, chosen so that the module sends exactly
// the two decimals that were typed. Further decimals are dropped.
float parse_hundredths(const std::string &text, std::string_view what);

// Whether such a number has further decimals that are not 0.
bool has_more_than_hundredths(std::string_view text);

} // namespace stmctl
