// "1F00  AB CD ...  |..|", sixteen bytes per line.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace stmctl
{

std::string hexdump(uint32_t address, std::span<const uint8_t> bytes);

} // namespace stmctl
