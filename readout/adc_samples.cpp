// One frame of ADC samples: their number, 300 samples, checksum; little-endian and packed.
//
//     host          request    D   D     00 00          66*length    66*4096
//     co-processor                 55    low high       frame
#include "link/bytes.hpp"
#include "link/link.hpp"
#include "link/report.hpp"
#include "readout/block.hpp"
#include "readout/text_buffer.hpp"

#include <cstddef>

using namespace stm;

namespace
{

constexpr int32_t SAMPLES_AT = 1;
constexpr int32_t SAMPLES = 300;
constexpr int32_t CHECKSUM_AT = SAMPLES_AT + 4 * SAMPLES;
constexpr int32_t FRAME_SIZE = CHECKSUM_AT + 2;
static_assert(FRAME_SIZE == 1203 && FRAME_SIZE <= STM_BUFFER_SIZE);

int32_t sample(int32_t index)
{
    return static_cast<int32_t>(get_le32(stm_link.rx_buffer + SAMPLES_AT + ptrdiff_t{4} * index));
}

uint16_t stored_checksum()
{
    return get_le16(stm_link.rx_buffer + CHECKSUM_AT);
}

// Outputs the message as one piece and empties it.
void hand_out(TextBuffer &message, StmOutputFn output)
{
    output(message.text, 1);
    text_clear(message);
}

// Kept: the header is appended to whatever the message still holds, and all of that is output.
void show_header(StmOutputFn output)
{
    TextBuffer message = text_behind_message();
    text_append(message, "\"value\";\n");
    output(message.text, 1);
}

// Kept: the first sample shares its piece with the number of samples.
void show_text(StmOutputFn output)
{
    const int count = stm_link.rx_buffer[0];
    TextBuffer message = text_in_message();
    text_format(message, "stm_uint8_t  num   : %d\n", count);
    for (int i = 0; i < count; ++i) {
        text_format(message, "stm_int32_t sample[%d]  : %ld\n", i, static_cast<long>(sample(i)));
        hand_out(message, output);
    }
    text_format(message, "stm_int8_t   checksum  : 0x%X\n\n", stored_checksum());
    output(message.text, 1);
}

// Kept: an empty piece follows the samples.
void show_csv(StmOutputFn output)
{
    const int32_t count = stm_link.rx_buffer[0];
    TextBuffer message = text_in_message();
    for (int32_t i = 0; i < count; ++i) {
        text_append_signed(message, sample(i));
        text_append(message, ";\n");
        hand_out(message, output);
    }
    output(message.text, 1);
}

// Kept: the first byte shares its piece with the heading; all bytes are shown, whatever the number
// of samples.
void show_hex(StmOutputFn output)
{
    TextBuffer message = text_in_message();
    text_append(message, "Received value: \n");
    for (int32_t i = 0; i < FRAME_SIZE; ++i) {
        text_append_hex(message, stm_link.rx_buffer + i, 1);
        hand_out(message, output);
    }
    text_append(message, "\n");
    output(message.text, 1);
}

void show_samples(int mode, StmOutputFn output)
{
    switch (mode) {
    case READOUT_HEX:
        show_hex(output);
        break;
    case READOUT_TEXT:
        show_text(output);
        break;
    case READOUT_CSV:
        show_csv(output);
        break;
    default:
        break;
    }
}

bool checksum_ok(StmOutputFn output)
{
    const uint16_t computed = stm_crc16(stm_link.rx_buffer, CHECKSUM_AT);
    if (computed == stored_checksum()) {
        return true;
    }
    // Kept: the frame's checksum is called "expected", the computed one "received", and a bracket
    // is missing.
    report_message(output, "Wrong checksum detected (expected: %X, received: %X\n",
                   stored_checksum(), computed);
    return false;
}

// Kept: after a time-out, which is reported, and a pause, the frame is fetched anyway.
bool wait_for_frame(StmPollFn poll, StmOutputFn output)
{
    link_clear_buffers();
    int32_t at_once = 0;
    const Wait wait = block_wait(BLOCK_POLLING, "SPI datatransfer", poll, output, at_once);
    if (wait == Wait::timed_out) {
        block_pause();
    }
    return wait == Wait::ready || wait == Wait::timed_out;
}

// Kept: here the length comes low byte first, and the frame counts as complete whatever it is.
bool fetch_frame()
{
    if (link_fetch_pair() < 0 || link_fetch(get_le16(stm_link.rx_buffer)) < 0) {
        report_errno("SPI datatransfer");
        return false;
    }
    return true;
}

} // namespace

void stm_read_adc_samples(int mode, StmPollFn poll, StmOutputFn output)
{
    if (mode == READOUT_CSV) {
        show_header(output);
    }
    if (request_send(STM_CMD_ADC_SAMPLES) < 0) {
        report_errno("SPI datatransfer");
        return;
    }
    if (wait_for_frame(poll, output) && fetch_frame() && checksum_ok(output)) {
        show_samples(mode, output);
        stm_sync_transfer();
    }
}
