// What a setting was sent as.
#pragma once

#include "stmctl/settings/operands.hpp"

#include <string>

namespace stmctl
{

// "adc-value-pair 3 = 12.50 0.25 (answer 1)": of a number in hundredths, not all digits may have
// gone out.
std::string sent_line(const Quantity &row, const Values &values, int32_t answer);

} // namespace stmctl
