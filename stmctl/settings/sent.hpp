// How a setting was sent.
#pragma once

#include "stmctl/settings/operands.hpp"

#include <string>

namespace stmctl
{

// "adc-value-pair 3 = 12.50 0.25 (answer 1)": not all digits of a number in hundredths may have
// been sent.
std::string sent_line(const Quantity &row, const Values &values, int32_t answer);

} // namespace stmctl
