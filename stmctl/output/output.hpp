// Everything that stmctl itself writes.
//
// A failing write is remembered, not thrown, because most writing is done inside of the module's
// callbacks. A run that writes much looks at output_failed; the others learn it at the end.
#pragma once

#include "stmctl/process/exit_status.hpp"

#include <string_view>

namespace stmctl
{

// Results, to standard output.
void print(std::string_view text);
void flush_output();
bool output_failed();
bool reader_has_left();               // of a pipe; nobody wants to hear more
ExitStatus status_of_failed_output(); // done if its reader went away

// Where a live line is shown: where results go if it is one, else where remarks go, also while
// standard error is captured.
enum class Screen { output, errors };
bool is_on_terminal(Screen screen);
int width_of(Screen screen); // in columns that a line may fill

// On a terminal: a line that refreshes itself, cut to the terminal's width. It is taken away in
// front of a remark, and at the end; or it is left standing, which a signal handler may do, too.
void show_live_line(Screen screen, std::string_view line);
void leave_live_line();
void remove_live_line();

// Remarks and failures, as "stmctl: SENTENCE" to standard error, also while that is captured.
void say(std::string_view sentence);

// How much is said besides results and failures.
enum class Detail { quiet, usual, verbose };
void set_detail(Detail detail);
Detail detail();

// As say: what is nice to know, progress and summaries among it, unless quiet.
void remark(std::string_view sentence);

// As say: how it is done, if verbose.
void say_more(std::string_view sentence);

// Lines of others, as they are, to standard error.
void pass_on(std::string_view text);

// The last thing of every run: what is still held is written. Returns the exit status: a reader
// that went away is no failure, a full disk is one.
ExitStatus finish_output(ExitStatus status);

// Makes descriptors 0 to 2 exist, so that the device never becomes one of them, and closed pipes
// and files that are too large errors instead of signals.
void prepare_output();

} // namespace stmctl
