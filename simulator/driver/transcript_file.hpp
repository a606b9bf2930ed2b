// The file to which a program's exchanges are appended, one line each.
#pragma once

#include <string>

namespace simulator
{

// Appends a line. The file is open only for that long: no descriptor of it can get in the program's
// way. "-" is standard error. Empty, or why the line could not be written.
std::string add_to_transcript(const std::string &path, const std::string &line);

} // namespace simulator
