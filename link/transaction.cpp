// The request/answer transaction: a command frame is sent, 'D' polls follow until the co-processor
// is ready, then two bytes are received.
//
//     host          code p0..p5 AA    D    D    D     00 00
//     co-processor                              55    low high
#include "link/bytes.hpp"
#include "link/link.hpp"
#include "link/report.hpp"
#include "link/stm_com_funcs.h"
#include "link/waiting.hpp"

#include <cstring>

using namespace stm;

namespace
{

int send_frame(uint8_t code, const uint8_t params[STM_PARAM_BYTES])
{
    uint8_t *frame = stm_link.tx_buffer;
    link_clear_command_bytes();
    frame[0] = code;
    memcpy(frame + 1, params, STM_PARAM_BYTES);
    frame[STM_FRAME_BYTES - 1] = STM_FRAME_END;
    return stm_transfer(frame, stm_link.rx_buffer, STM_FRAME_BYTES);
}

// Kept: it sleeps before it checks the answer to a poll.
constexpr Polling ANSWER_POLLING = {1, STM_PARAM_POLL_LIMIT, STM_PARAM_POLL_US};

int32_t read_answer()
{
    if (link_fetch_pair() < 0) {
        report_errno("Error stm_com_funcs: SPI datasize \n");
        return -1;
    }
    return get_le16(stm_link.rx_buffer);
}

} // namespace

int32_t stm_param_command(uint8_t code, const uint8_t params[STM_PARAM_BYTES], StmPollFn poll,
                          StmOutputFn output)
{
    if (send_frame(code, params) < 0) {
        report_errno("Error stm_com_funcs: SPI command \n");
        return -1;
    }
    int32_t at_once = 0; // the answer to a poll is one byte
    switch (wait_until_ready(ANSWER_POLLING, poll, at_once)) {
    case Wait::failed:
        report_errno("Error stm_com_funcs: SPI wait for ACK\n");
        return -1;
    case Wait::stopped:
        return 0;
    case Wait::timed_out:
        // Kept: the answer is fetched and returned anyway.
        report_message(output, "Error stm_com_funcs: SPI timeout\n");
        break;
    case Wait::ready:
        break;
    }
    return read_answer();
}

int32_t stm_command(uint8_t code, uint8_t p0, uint8_t p1, uint8_t p2, uint8_t p3, StmPollFn poll,
                    StmOutputFn output)
{
    const uint8_t params[STM_PARAM_BYTES] = {p0, p1, p2, p3, 0, 0};
    return stm_param_command(code, params, poll, output);
}

int32_t stm_command_r(StmPollFn poll, StmOutputFn output)
{
    return stm_command('r', 0, 0, 0, 0, poll, output);
}

int32_t stm_command_q(StmPollFn poll, StmOutputFn output)
{
    return stm_command('q', 0, 0, 0, 0, poll, output);
}

int32_t stm_command_c(StmPollFn poll, StmOutputFn output)
{
    return stm_command('c', 0, 0, 0, 0, poll, output);
}

int32_t stm_command_d(StmPollFn poll, StmOutputFn output)
{
    return stm_command('d', 0, 0, 0, 0, poll, output);
}

int32_t stm_command_3(StmPollFn poll, StmOutputFn output)
{
    return stm_command('3', 0, 0, 0, 0, poll, output);
}

int32_t stm_command_2(StmPollFn poll, StmOutputFn output)
{
    return stm_command('2', 0, 0, 0, 0, poll, output);
}

int32_t stm_write_byte(uint16_t address, uint8_t value, StmPollFn poll, StmOutputFn output)
{
    return stm_command(STM_CMD_WRITE_BYTE, low_byte(address), high_byte(address), value, 0, poll,
                       output);
}

void stm_write_string(uint16_t address, const char *text, StmPollFn poll, StmOutputFn output)
{
    // Kept: all characters go to the same address, and the index wraps at 256.
    for (uint8_t i = 0; text[i] != '\0'; ++i) {
        stm_write_byte(address, static_cast<uint8_t>(text[i]), poll, output);
    }
}

void stm_not_implemented(int, int, StmOutputFn output)
{
    output("not implemented\n", 0);
}
