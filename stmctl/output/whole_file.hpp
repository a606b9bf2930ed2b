// A file that is written whole or stays as it was.
#pragma once

#include <string>
#include <string_view>

namespace stmctl
{

// Throws a Failure if the file could not be written, as far as that can be told beforehand.
void expect_writable(const std::string &path);

// Puts the text in place of what the file held; a device or a pipe just gets it. Throws a Failure
// if that fails.
void write_whole(const std::string &path, std::string_view text);

} // namespace stmctl
