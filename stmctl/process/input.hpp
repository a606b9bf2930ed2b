// What a file, a pipe or standard input holds, read whole.
#pragma once

#include <cstddef>
#include <string>

namespace stmctl
{

// "standard input" for "-".
std::string input_name(const std::string &path);

// Reads to the end, but no more than one byte above the most. Waits for a pipe's other end, which
// an interrupt ends: throws a Failure then, and if it cannot be read.
std::string read_whole(const std::string &path, size_t most);

} // namespace stmctl
