// Yardstick: a number to text in any base, one division per digit, then reversed.
#pragma once

#include <cstdint>

namespace bench
{

char *digit_loop(int32_t value, char *buffer, int32_t base);
char *digit_loop_unsigned(uint32_t value, char *buffer, int32_t base);

} // namespace bench
