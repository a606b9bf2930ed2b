// The second half of a query: the bytes that the co-processor announced in its answer.
#pragma once

#include <cstdint>

namespace stm
{

// Fetches a reply of length bytes to the start of rx_buffer. A negative length means that the
// transaction failed: then there is no exchange, and no report. False if there is no reply.
bool stm_read_reply(int32_t length);

// The number in a reply of length bytes, low byte first. It has width bytes, 4 at most: missing
// ones count as 0, surplus ones are ignored.
uint32_t reply_number(int32_t length, int32_t width);

} // namespace stm
