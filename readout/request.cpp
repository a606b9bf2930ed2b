// Request frames of the read-outs.
#include "readout/request.hpp"

#include "link/link.hpp"

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
