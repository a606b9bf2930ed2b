// What a terminal is like, and what is drawn on it.
#pragma once

#include <string>

namespace stmctl
{

bool is_terminal(int descriptor);

// Columns of a terminal; 80 where that is none.
int terminal_width(int descriptor = 1);

// "[#####.....]  50 %" of so many columns in all.
std::string progress_bar(double share, int columns);

// "0:07", "12:34", "1:02:03"
std::string clock_words(double seconds);

} // namespace stmctl
