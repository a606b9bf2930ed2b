// The channels on which an operation reports; nothing else of the module prints.
#pragma once

#include "link/stm_com_funcs.h"

namespace stm
{

// A failing system call: text, colon, space and the system's error message on standard error.
void report_errno(const char *text);

// A complete message: formatted into the link's message buffer and passed to the output callback
// with flag 0. Returns what the callback returns.
[[gnu::format(printf, 2, 3)]] int report_message(StmOutputFn output, const char *format, ...);

// A remark that is not a report, on standard error.
[[gnu::format(printf, 1, 2)]] void report_diagnostic(const char *format, ...);

} // namespace stm
