// How a wait listens to its operator.
#pragma once

#include "link/stm_com_funcs.h"

// Calls the input poll once. True if it delivered exactly the stop line.
bool stop_requested(StmPollFn poll);
