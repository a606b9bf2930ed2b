// What a regular file holds that somebody is to write on.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

// Of a file that is open for reading; 0 if it is no regular one.
int64_t size_of_regular(int descriptor);

// At most so many bytes of it.
std::string first_bytes(int descriptor, size_t size);

// Where its last whole line ends; nothing if it holds no newline. Throws a Failure if that cannot be
// read: what comes after that place is cut off, and must not be guessed.
std::optional<int64_t> end_of_last_line(int descriptor);

} // namespace stmctl
