// The user's wish to stop a run: the line "s" on standard input, or Ctrl-C; a second Ctrl-C ends
// the process at once.
//
// Input that does not come from a terminal often belongs to others, for instance to a loop in a
// script that reads a list. Only runs that continue until they are stopped take all of it; others
// take the line "s" if it comes first, and leave everything else in place.
#pragma once

#include <chrono>

namespace stmctl
{

// before_abrupt_end is called by a signal handler.
void watch_for_stop(void (*before_abrupt_end)());
void take_all_input(); // even if it is not from a terminal

// Whether the user wants to stop; once true, it stays true. Standard input is checked at most every
// ten milliseconds.
bool stop_requested();

// The same for signals only: typed input is left for those who asked for it.
bool interrupted();

// Waits until the time is over or the user wants to stop. Returns false in the latter case.
bool wait_unless_stopped(std::chrono::milliseconds time);

// Waits until the descriptor, by default standard input, can be read, without reading it. Returns
// false if an interrupt came.
bool wait_for_input(int descriptor = 0);

} // namespace stmctl
