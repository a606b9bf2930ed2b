// The record in a slot of the ring.
#pragma once

#include "link/stm_com_funcs.h"
#include "stmctl/record/record.hpp"

namespace stmctl
{

// Whether its checksum matches its fields in the order of the protocol.
bool is_whole(const RingRecord &slot);

bool is_empty(const RingRecord &slot); // never written

Record record_of_slot(const RingRecord &slot);

} // namespace stmctl
