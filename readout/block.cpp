// A block of records: request, wait, and the check of a record.
#include "readout/block.hpp"

#include "link/report.hpp"
#include "readout/render.hpp"

#include <unistd.h>

namespace stm
{

int request_send(uint8_t command)
{
    stm_link.tx_short[0] = command;
    stm_link.tx_short[STM_FRAME_BYTES - 1] = STM_FRAME_END;
    return stm_transfer(stm_link.tx_short, stm_link.rx_short, STM_FRAME_BYTES);
}

int request_send(uint8_t command, uint8_t second)
{
    stm_link.tx_short[1] = second;
    return request_send(command);
}

Wait block_wait(const Polling &polling, const char *failure, StmPollFn poll, StmOutputFn output,
                int32_t &ready_at)
{
    const Wait wait = wait_until_ready(polling, poll, ready_at);
    if (wait == Wait::failed) {
        report_errno(failure);
    }
    if (wait == Wait::timed_out) {
        report_message(output, "SPI timeout\n");
    }
    return wait;
}

Wait block_await(const Polling &polling, const char *failure, StmPollFn poll, StmOutputFn output,
                 int32_t &ready_at)
{
    for (;;) {
        link_clear_buffers();
        const Wait wait = block_wait(polling, failure, poll, output, ready_at);
        if (wait != Wait::timed_out) {
            return wait;
        }
        block_pause();
    }
}

void block_pause()
{
    usleep(STM_BLOCK_TIMEOUT_US);
}

bool record_check(const RecordFormat &format, const uint8_t *record, StmOutputFn output)
{
    // Once each: a record in the ring may change between the comparison and the report.
    const uint16_t computed = record_checksum(format, record);
    const uint16_t stored = record_stored_checksum(format, record);
    if (computed == stored) {
        return true;
    }
    report_message(output, "Wrong checksum detected (crc = %X, checksum= %X)\n", computed, stored);
    return false;
}

} // namespace stm
