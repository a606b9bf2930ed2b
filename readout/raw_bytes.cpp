// Fifty bytes that the host does not interpret.
#include "link/link.hpp"
#include "link/report.hpp"
#include "readout/block.hpp"
#include "readout/text_buffer.hpp"

using namespace stm;

namespace
{

constexpr int32_t FETCHED_BYTES = 50;
constexpr int32_t LISTED_BYTES = 48;                        // kept: two fewer than are fetched
constexpr int32_t RAW_TEXT_SIZE = 5 * STM_BUFFER_SIZE + 64; // "0xFF " for each, and the headings

int send_command()
{
    link_clear_buffers();
    stm_link.tx_buffer[0] = STM_CMD_RAW_BYTES;
    stm_link.tx_buffer[STM_FRAME_BYTES - 1] = STM_FRAME_END;
    return stm_transfer(stm_link.tx_buffer, stm_link.rx_buffer, STM_FRAME_BYTES);
}

void list_bytes(TextBuffer &buffer)
{
    text_append(buffer, "\nReceived values: \n");
    for (int i = 0; i < LISTED_BYTES; ++i) {
        text_format(buffer, "%d.Byte 0x%02X \n", i, stm_link.rx_buffer[i]);
    }
}

void list_csv(TextBuffer &buffer)
{
    for (int i = 0; i < LISTED_BYTES; ++i) {
        text_format(buffer, "\"%d.Byte\";0x%02X;", i, stm_link.rx_buffer[i]);
    }
    text_append(buffer, "\n");
}

// Kept: the whole receive buffer is dumped, which is zero after the bytes received.
void dump_bytes(TextBuffer &buffer)
{
    text_append(buffer, "\nByte delay: 0\nReceived value: \n");
    text_append_hex(buffer, stm_link.rx_buffer, STM_BUFFER_SIZE);
    text_append(buffer, "\n");
}

// Kept: even data is output with the flag 0 here.
void show_bytes(int mode, StmOutputFn output)
{
    char memory[RAW_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    switch (mode) {
    case READOUT_HEX:
        dump_bytes(buffer);
        break;
    case READOUT_TEXT:
        list_bytes(buffer);
        break;
    case READOUT_CSV:
        list_csv(buffer);
        break;
    default:
        return;
    }
    output(buffer.text, 0);
}

// Kept: after a time-out the bytes are fetched anyway, at once.
bool wait_for_bytes(StmPollFn poll, StmOutputFn output)
{
    int32_t at_once = 0;
    const Wait wait = block_wait(BLOCK_POLLING, "SPI datatransfer", poll, output, at_once);
    return wait == Wait::ready || wait == Wait::timed_out;
}

} // namespace

void stm_read_raw_bytes(int mode, StmPollFn poll, StmOutputFn output)
{
    if (send_command() < 0) {
        report_errno("SPI datatransfer");
        return;
    }
    if (!wait_for_bytes(poll, output)) {
        return;
    }
    if (link_fetch(FETCHED_BYTES) < 0) {
        report_errno("SPI datatransfer");
        return;
    }
    show_bytes(mode, output);
}
