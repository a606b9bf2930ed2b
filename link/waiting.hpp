// How a wait ends, and how it listens to its operator.
#pragma once

#include "link/stm_com_funcs.h"

// How a wait for the co-processor ends.
enum class Wait { ready, stopped, timed_out, failed };

// Calls the input poll once. True if it delivered exactly the stop line.
bool stop_requested(StmPollFn poll);
