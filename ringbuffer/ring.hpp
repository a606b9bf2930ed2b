// What the writer adds to the operations of the ring.
#pragma once

#include <cstdint>

namespace stm
{

// RingBuffer_PutValue for a record as it has come over the wire, which is repacked in its slot.
int ring_put_from_wire(int handle, const uint8_t *record);

} // namespace stm
