// The acknowledge handshake: sends '3' and receives a status, until one of them decides.
#include "link/link.hpp"
#include "link/report.hpp"
#include "link/stm_com_funcs.h"
#include "link/waiting.hpp"

#include <unistd.h>

using namespace stm;

namespace
{

bool ends_wait(uint8_t status)
{
    return status == STM_ACK || (status & STM_STATUS_ERROR_BITS) == STM_STATUS_ERROR_BITS;
}

int fail(StmOutputFn output, const char *text)
{
    report_message(output, "%s", text);
    return -1;
}

// Kept: 0xF2 to 0xFE acknowledge like 0x55, and an acknowledge in the last poll comes too late,
// whereas an error in the last poll is still reported as such.
int judge_status(uint8_t status, int polls, StmOutputFn output)
{
    switch (status) {
    case STM_BUS_INACTIVE:
        return fail(output, "SPI Bus inactive\n");
    case STM_ERR_CHECKSUM:
        return fail(output, "Checksum error\n");
    case STM_ERR_ADDRESS:
        return fail(output, "Address error\n");
    default:
        return polls < STM_ACK_POLL_LIMIT ? 1 : fail(output, "SPI timeout\n");
    }
}

} // namespace

int stm_wait_for_ack(StmPollFn poll, StmOutputFn output)
{
    link_prepare_transfer(stm_link.transfer); // there may have been no download to do so
    int polls = 0;
    do {
        usleep(STM_ACK_POLL_US);
        stm_link.tx_buffer[0] = STM_POLL_ACK;
        if (stm_transfer(stm_link.transfer, 1) < 0) {
            report_errno("SPI wait for ACK");
            return -1;
        }
        // Kept: a stop takes precedence over the status of its poll, whatever that is.
        if (stop_requested(poll)) {
            return 0;
        }
        usleep(STM_ACK_AFTER_POLL_US);
        ++polls;
    } while (polls < STM_ACK_POLL_LIMIT && !ends_wait(stm_link.rx_buffer[0]));
    return judge_status(stm_link.rx_buffer[0], polls, output);
}
