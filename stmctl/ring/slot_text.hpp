// A record of the ring: checked, and shown as the module shows those from the wire.
#pragma once

#include "link/stm_com_funcs.h"

#include <string>

namespace stmctl
{

// Puts the fields back into the wire's order, over which the checksum was made.
bool is_whole(const RingRecord &record);

bool is_empty(const RingRecord &record); // its slot was never written

std::string ring_csv_header();
std::string ring_csv_line(const RingRecord &record);
std::string ring_record_text(const RingRecord &record);

} // namespace stmctl
