// The single-byte commands: each is one exchange; a query fetches its answer with another one
// 100 ms later.
#include "link/link.hpp"
#include "link/report.hpp"
#include "link/stm_com_funcs.h"

#include <unistd.h>

#include <cstdio>

using namespace stm;

namespace
{

// Sends a command of length bytes; a full frame includes its end byte.
int send_command(uint8_t command, int32_t length)
{
    link_clear_command_bytes();
    stm_link.tx_buffer[0] = command;
    if (length == STM_FRAME_BYTES) {
        stm_link.tx_buffer[STM_FRAME_BYTES - 1] = STM_FRAME_END;
    }
    if (stm_transfer(stm_link.tx_buffer, stm_link.rx_buffer, length) < 0) {
        report_errno("SPI command");
        return -1;
    }
    return 0;
}

} // namespace

int stm_start_bootloader()
{
    return send_command(STM_CMD_START_BOOTLOADER, STM_FRAME_BYTES);
}

int stm_reset()
{
    return send_command(STM_CMD_RESET, 1);
}

int stm_query_byte(uint8_t command, uint8_t *answer)
{
    // Kept: only '#' is sent as a full frame.
    if (send_command(command, command == STM_CMD_STATE ? STM_FRAME_BYTES : 1) < 0) {
        return -1;
    }
    usleep(STM_ANSWER_PAUSE_US);
    if (link_poll_data(1) < 0) {
        report_errno("read data");
        return -1;
    }
    *answer = stm_link.rx_buffer[0];
    return 0;
}

// Kept: failed queries go unnoticed below; their byte is then 0.

int stm_print_booter_version(StmPollFn, StmOutputFn output)
{
    uint8_t minor = 0;
    stm_query_byte(STM_CMD_VERSION, &minor);
    if (minor == 0) {
        return output("Booter Version unknown\n", 0);
    }
    // Kept: the major number is always 1; the co-processor sends only the minor one.
    char text[sizeof("Booter Version 1.255\n")];
    snprintf(text, sizeof(text), "Booter Version 1.%d\n", minor);
    return output(text, 0);
}

int stm_print_state(StmPollFn, StmOutputFn output)
{
    uint8_t mode = 0;
    stm_query_byte(STM_CMD_STATE, &mode);
    char text[sizeof("255\n")];
    snprintf(text, sizeof(text), "%d\n", mode);
    return output(text, 0);
}
