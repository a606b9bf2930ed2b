// The record in a slot of the ring.
#pragma once

#include "link/stm_com_funcs.h"
#include "stmctl/record/record.hpp"

namespace stmctl
{

// Whether its checksum is that of its fields, put back into the wire's order.
bool is_whole(const RingRecord &slot);

bool is_empty(const RingRecord &slot); // never written

Record record_of_slot(const RingRecord &slot);

} // namespace stmctl
