// gnuplot, run as a filter.
#pragma once

#include <string>

namespace stmctl
{

// Feeds it a script, and returns what it writes. Throws a Failure if it is not there or fails.
std::string run_gnuplot(const std::string &script);

// A string of its language in which nothing has a meaning.
std::string gnuplot_string(const std::string &text);

} // namespace stmctl
