// Numbers as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace simulator
{

// A number, decimal or with 0x, within the limits, with nothing before or after it.
std::optional<int64_t> parse_number(std::string_view words, int64_t least, int64_t most);

} // namespace simulator
