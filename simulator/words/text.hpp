// Formatted text as a string.
#pragma once

#include <string>

namespace simulator
{

[[gnu::format(printf, 1, 2)]] std::string text(const char *format, ...);

} // namespace simulator
