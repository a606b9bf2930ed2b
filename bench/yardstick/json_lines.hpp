// A plain conversion of CSV with a header to JSON, one object per line.
#pragma once

#include <string>

namespace bench
{

std::string json_lines(const std::string &csv);

} // namespace bench
