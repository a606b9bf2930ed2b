// Records for the output callback.
#include "readout/record_output.hpp"

#include "link/link.hpp"
#include "readout/render.hpp"

namespace
{

constexpr int32_t DUMPED_BYTES = 48;

void output_text(const RecordFormat &format, const uint8_t *record, StmOutputFn output)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    render_record_text(format, record, buffer);
    output(buffer.text, 1);
}

// Kept: a record without a number is rendered, but not handed on.
void output_csv(const RecordFormat &format, const uint8_t *record, StmOutputFn output)
{
    TextBuffer message = text_in_message();
    render_record_csv(format, record, message);
    if (record[RECORD_NUMBER_AT] != 0) {
        output(message.text, 1);
    }
}

// Kept: every record of a block shows the block's first 48 bytes, however long a record is.
void output_hex(StmOutputFn output)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    text_append(buffer, "Received value: \n");
    text_append_hex(buffer, stm_link.rx_buffer, DUMPED_BYTES);
    text_append(buffer, "\n");
    output(buffer.text, 1);
}

} // namespace

void output_csv_header(const RecordFormat &format, int mode, StmOutputFn output)
{
    if (mode == READOUT_CSV) {
        TextBuffer message = text_in_message();
        render_csv_header(format, message);
        output(message.text, 1);
    }
}

void output_record(const RecordFormat &format, const uint8_t *record, int mode, StmOutputFn output)
{
    switch (mode) {
    case READOUT_HEX:
        output_hex(output);
        break;
    case READOUT_TEXT:
        output_text(format, record, output);
        break;
    case READOUT_CSV:
        output_csv(format, record, output);
        break;
    default:
        break;
    }
}
