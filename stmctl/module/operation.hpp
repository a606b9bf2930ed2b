// Runs one operation of the module and gathers everything that came of it.
#pragma once

#include "link/stm_com_funcs.h"
#include "stmctl/module/voice.hpp"

#include <functional>
#include <string>
#include <vector>

namespace stmctl
{

struct Outcome {
    int32_t result = 0;             // what the operation returned
    std::vector<std::string> texts; // what went to the output callback, if no sink took it
    std::vector<Report> failures;   // what went to perror
    bool timed_out = false;         // the module reported a time-out
    bool rejected = false;          // or a wrong checksum
    bool stopped = false;           // by the user
    bool cut_off = false;           // by the stop line, for whatever reason
};

using Operation = std::function<int32_t(StmPollFn poll, StmOutputFn output)>;

// Takes the texts of an operation instead of Outcome::texts; time-outs are still noticed. The sink
// and the question may throw: the operation is then stopped, and the exception is thrown again
// after it.
using Sink = std::function<void(const char *text, int more)>;

enum class Wish {
    go_on,
    end,  // nothing more is wanted from this operation
    stop, // by the user
};

// Asked whenever the module polls.
using Question = std::function<Wish()>;

Wish ask_user();

// Lines on standard error that are not reports are passed on to it.
Outcome perform(const Operation &operation, const Sink &sink = {},
                const Question &question = ask_user);

// Brings the link to the point where the co-processor waits for a command.
Outcome synchronise();

// Throws a Failure, "NAME: why", for a failing exchange, a time-out or a stop.
void check(const Outcome &outcome, const std::string &name);

} // namespace stmctl
