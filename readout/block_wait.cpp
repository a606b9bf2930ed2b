// The wait for a block.
#include "readout/block_wait.hpp"

#include "link/link.hpp"
#include "link/report.hpp"

#include <unistd.h>

Wait block_wait(const char *failure, StmPollFn poll, StmOutputFn output)
{
    for (int polls = 1;; ++polls) {
        if (link_poll_data() < 0) {
            report_errno(failure);
            return Wait::failed;
        }
        if (stop_requested(poll)) {
            return Wait::stopped;
        }
        // Kept: the byte of the last poll is not looked at; it can no longer succeed.
        if (polls == STM_BLOCK_POLL_LIMIT) {
            report_message(output, "SPI timeout\n");
            return Wait::timed_out;
        }
        if (stm_link.rx_buffer[0] == STM_ACK) {
            return Wait::ready;
        }
    }
}

void block_pause()
{
    usleep(STM_BLOCK_TIMEOUT_US);
}
