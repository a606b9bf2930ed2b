// The second half of a query.
#include "acquisition/reply.hpp"

#include "link/link.hpp"
#include "link/report.hpp"

namespace stm
{

bool stm_read_reply(int32_t length)
{
    if (length < 0) {
        return false;
    }
    if (link_fetch(length) < 0) {
        report_errno("SPI datatransfer");
        return false;
    }
    return true;
}

uint32_t reply_number(int32_t length, int32_t width)
{
    uint32_t number = 0;
    for (int32_t i = 0; i < length && i < width; ++i) {
        number |= static_cast<uint32_t>(stm_link.rx_buffer[i]) << (8 * i);
    }
    return number;
}

} // namespace stm
