// Repeats an operation until nothing more is wanted, whatever the board does.
#pragma once

#include "stmctl/module/device.hpp"
#include "stmctl/stream/record_stream.hpp"

#include <functional>

namespace stmctl
{

enum class Ending { done, stopped, stopped_in_silence, failed };

struct Repetition {
    Device &device;
    RecordStream &stream;
    std::function<Outcome()> once; // runs the operation, which asks the run
};

// Runs it until the run is over, the user stops it, or it ends by itself, which is a failure unless
// the stream is to keep going: in that case the link is restored and the operation is run again.
Ending repeat(const Repetition &repetition, Run &run, RecordTally &tally);

} // namespace stmctl
