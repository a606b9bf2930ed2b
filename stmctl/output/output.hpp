// Everything that stmctl itself writes.
//
// A failed write is remembered, not thrown, because most writing happens inside the module's
// callbacks. A run that writes much checks output_failed; the others learn of it at the end.
#pragma once

#include "stmctl/process/exit_status.hpp"

#include <string_view>

namespace stmctl
{

// Results, to standard output.
void print(std::string_view text);
void flush_output();
bool output_failed();
bool reader_has_left();               // of a pipe; nothing more is wanted
ExitStatus status_of_failed_output(); // done if its reader went away

// Where a live line is shown: on standard output if it is a terminal, otherwise on standard error,
// even while that is captured.
enum class Screen { output, errors };
bool is_on_terminal(Screen screen);
int width_of(Screen screen); // in columns that a line may occupy

// On a terminal: a line that refreshes itself, cut to the terminal's width. It is removed before a
// remark and at the end, or left in place, which a signal handler may do as well.
void show_live_line(Screen screen, std::string_view line);
void leave_live_line();
void remove_live_line();

// Remarks and failures, as "stmctl: SENTENCE" to standard error, even while that is captured.
void say(std::string_view sentence);

// How much is printed besides results and failures.
enum class Detail { quiet, usual, verbose };
void set_detail(Detail detail);
Detail detail();

// Like say, unless quiet: additional information such as progress and summaries.
void remark(std::string_view sentence);

// Like say, if verbose: details.
void say_more(std::string_view sentence);

// Lines of other origin, unchanged, to standard error.
void pass_on(std::string_view text);

// The last step of every run: writes what is still buffered. Returns the exit status: a reader that
// went away is not a failure, a full disk is.
ExitStatus finish_output(ExitStatus status);

// Makes sure that descriptors 0 to 2 exist, so that the device never becomes one of them, and turns
// signals for closed pipes and oversized files into errors.
void prepare_output();

} // namespace stmctl
