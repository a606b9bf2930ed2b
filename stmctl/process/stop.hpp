// The user's wish to end what runs: the line "s" on standard input, or Ctrl-C; a second Ctrl-C
// ends the process at once.
//
// Input that comes from no terminal often belongs to others, to the loop of a script that reads a
// list for instance. Only runs that go on until they are stopped take all of it; others take the
// line "s" if it comes first, and leave everything else where it is.
#pragma once

#include <chrono>

namespace stmctl
{

// before_abrupt_end is called by a signal handler.
void watch_for_stop(void (*before_abrupt_end)());
void take_all_input(); // not only from a terminal

// Looks whether the wish has been uttered; it holds from then on. Standard input is looked at no
// more often than each ten milliseconds.
bool stop_requested();

// The same by a signal alone: what is typed stays for whoever asked for it.
bool interrupted();

// Waits in a way that the wish ends. Returns false if it did.
bool wait_unless_stopped(std::chrono::milliseconds time);

// Waits until a file, unless told otherwise standard input, can be read, without reading it.
// Returns false if an interrupt came.
bool wait_for_input(int descriptor = 0);

} // namespace stmctl
