// Yardsticks for the ring's writer.
#pragma once

#include "link/stm_com_funcs.h"

#include <cstdint>

namespace bench
{

// Copies 48 bytes into the next slot and advances the indices.
void plain_put(RingBuffer &ring, const void *record);

// Puts the live stream into the ring until the poll callback has a line, with the module's exchanges
// and clears, the checksum from the byte table, and each record moved byte by byte.
void plain_acquire(RingBuffer &ring, StmPollFn poll);

} // namespace bench
