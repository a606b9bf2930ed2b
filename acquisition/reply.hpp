// The second half of a query: the bytes that the co-processor announced in its answer.
#pragma once

#include <cstdint>

namespace stm
{

// Fetches a reply of so many bytes to the start of rx_buffer. A length below 0 is that of a failed
// transaction: there is no exchange then, and no report. False if there is no reply.
bool stm_read_reply(int32_t length);

// The number that a reply of length bytes gives, low byte first. It has width bytes, 4 at most:
// those that are missing count as 0, further ones are left out.
uint32_t reply_number(int32_t length, int32_t width);

} // namespace stm
