// The wait for a block, which all read-outs share.
#pragma once

#include "link/waiting.hpp"

// Polls with 'D', without pauses, until 0x55 comes back, at most 301 times. A failing exchange is
// reported with the read-out's own text, a time-out to the output callback.
Wait block_wait(const char *failure, StmPollFn poll, StmOutputFn output);

// The pause that most read-outs make after a time-out.
void block_pause();
