// What the writer needs beyond the operations of the ring.
#pragma once

#include <cstdint>

namespace stm
{

// RingBuffer_PutValue for a record as received from the wire, which is repacked into its slot.
int ring_put_from_wire(int handle, const uint8_t *record);

} // namespace stm
