// A file that is written whole or stays as it was.
#pragma once

#include <string>
#include <string_view>

namespace stmctl
{

// Throws a Failure if it is already clear that the file cannot be written.
void expect_writable(const std::string &path);

// Replaces the content of the file with the text; a device or a pipe is simply written to. Throws a
// Failure if that fails.
void write_whole(const std::string &path, std::string_view text);

} // namespace stmctl
