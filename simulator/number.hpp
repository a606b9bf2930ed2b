// Numbers in words.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace simulator
{

// A number, decimal or with 0x, within the limits. Nothing may stand around it.
std::optional<int64_t> parse_number(std::string_view words, int64_t least, int64_t most);

} // namespace simulator
