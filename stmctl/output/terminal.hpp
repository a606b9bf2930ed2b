// The properties of a terminal, and what is drawn on it.
#pragma once

#include <string>

namespace stmctl
{

bool is_terminal(int descriptor);

// The columns of a terminal; 80 if it is not a terminal.
int terminal_width(int descriptor = 1);

// "[#####.....]  50 %" with this total number of columns.
std::string progress_bar(double share, int columns);

// "0:07", "12:34", "1:02:03"
std::string clock_words(double seconds);

} // namespace stmctl
