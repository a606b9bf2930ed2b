// A number of things as text.
#pragma once

#include <cstdint>
#include <string>

namespace stmctl
{

// "1 byte", "2 bytes"
std::string counted(uint64_t number, const char *one, const char *several);

} // namespace stmctl
