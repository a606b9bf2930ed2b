// Yardsticks for the ring's writer.
#pragma once

#include "link/stm_com_funcs.h"

#include <cstdint>

namespace bench
{

// Copies 48 bytes into the next slot and moves the indices on.
void plain_put(RingBuffer &ring, const void *record);

// The live stream into the ring, until the poll callback has a line: the module's exchanges and
// clears, the checksum by the byte table, and each record moved byte by byte.
void plain_acquire(RingBuffer &ring, StmPollFn poll);

} // namespace bench
