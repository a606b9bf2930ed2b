// gnuplot, run as a filter.
#pragma once

#include <string>

namespace stmctl
{

// Feeds it a script, and returns what it writes. Throws a Failure if it is not there or fails.
std::string run_gnuplot(const std::string &script);

// Its path, empty if it is not installed.
std::string find_gnuplot();

// A string of its language in which nothing has a meaning.
std::string gnuplot_string(const std::string &text);

} // namespace stmctl
