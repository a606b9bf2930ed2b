// gnuplot, run as a filter.
#pragma once

#include <string>

namespace stmctl
{

// Feeds it a script and returns its output. Throws a Failure if it is missing or fails.
std::string run_gnuplot(const std::string &script);

// Its path, empty if it is not installed.
std::string find_gnuplot();

// A string in its language in which nothing is special.
std::string gnuplot_string(const std::string &text);

} // namespace stmctl
