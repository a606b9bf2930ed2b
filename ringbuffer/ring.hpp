// What RingBuffer_PutValue consists of, for a writer that makes its record in the slot itself.
#pragma once

#include "link/stm_com_funcs.h"

namespace stm
{

// The slot that the writer fills next, and its index; null if the handle is not the writer's, or
// the index is none.
RingRecord *ring_slot_to_fill(int handle, int32_t &index);

// The slot of this index is filled: readers may have it.
void ring_announce(int32_t index);

} // namespace stm
