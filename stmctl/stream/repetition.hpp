// Runs an operation again and again until nothing more is wanted.
#pragma once

#include "stmctl/module/operation.hpp"
#include "stmctl/process/exit_status.hpp"
#include "stmctl/record/record_tally.hpp"
#include "stmctl/stream/run.hpp"

#include <functional>
#include <string>

namespace stmctl
{

enum class Ending { done, stopped, failed };

struct Repetition {
    std::string name;              // of the command
    bool keep_going;               // after a failure wait, synchronise the link and run it again
    std::function<Outcome()> once; // runs the operation with poll_run
};

// Runs it until the run is over, the user stops it, or it ends by itself, which is a failure unless
// it is to keep going. A failure is said, of several in a row the first.
Ending repeat(const Repetition &repetition, Run &run, RecordTally &tally);

// What the ending of a run means: an endless one is done when its user ends it, a limited one has
// failed if nothing came in its time.
ExitStatus status_of(Ending ending, const RunOptions &options, const RecordTally &tally);

} // namespace stmctl
