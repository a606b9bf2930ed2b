// What a CSV with a header is as JSON, an object in a line, made plainly.
#pragma once

#include <string>

namespace bench
{

std::string json_lines(const std::string &csv);

} // namespace bench
