// The content of a regular file that is to be continued.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

// Of a file that is open for reading; 0 if it is not a regular file.
int64_t size_of_regular(int descriptor);

// At most this many bytes of it.
std::string first_bytes(int descriptor, size_t size);

// Where its last whole line ends; nothing if it holds no newline. Throws a Failure if that cannot
// be read: everything after that place is cut off, so it must not be guessed.
std::optional<int64_t> end_of_last_line(int descriptor);

} // namespace stmctl
