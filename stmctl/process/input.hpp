// Reads all of a file, a pipe or standard input.
#pragma once

#include <cstddef>
#include <string>

namespace stmctl
{

// "standard input" for "-".
std::string input_name(const std::string &path);

// Reads to the end, but at most one byte more than most. Waits for the other end of a pipe. Throws
// a Failure if an interrupt ends the wait, or if the input cannot be read.
std::string read_whole(const std::string &path, size_t most);

} // namespace stmctl
