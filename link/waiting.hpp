// A wait for the co-processor: how it polls, how it ends, and how the operator can stop it.
#pragma once

#include "link/stm_com_funcs.h"

namespace stm
{

// How the co-processor is polled until it is ready.
struct Polling {
    int32_t bytes;     // 'D's in a poll; 0x55 anywhere in the bytes received means ready
    int limit;         // of polls; kept: the answer to the last one is not checked
    uint32_t pause_us; // after each poll, 0 for none
};

// How a wait for the co-processor ends.
enum class Wait { ready, stopped, timed_out, failed };

// Polls until the co-processor is ready; ready_at is then the index of its 0x55 in rx_buffer.
// Reports nothing: after a failing exchange errno says why.
Wait wait_until_ready(const Polling &polling, StmPollFn poll, int32_t &ready_at);

// Calls the input poll once. True if it delivered exactly the stop line.
bool stop_requested(StmPollFn poll);

} // namespace stm
