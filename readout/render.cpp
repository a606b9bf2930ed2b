// Records as text.
#include "readout/render.hpp"

#include "link/link.hpp"
#include "readout/render_fields.hpp"

namespace stm
{

template char *render_fields_text<STM_RECORD_FIELDS>(const uint8_t *, char *);
template char *render_fields_text<STM_RECORD_FIELDS_OMEGA>(const uint8_t *, char *);
template char *render_fields_text<STM_RECORD_FIELDS_TEMP>(const uint8_t *, char *);
template char *render_fields_csv<STM_RECORD_FIELDS>(const uint8_t *, char *);
template char *render_fields_csv<STM_RECORD_FIELDS_OMEGA>(const uint8_t *, char *);
template char *render_fields_csv<STM_RECORD_FIELDS_TEMP>(const uint8_t *, char *);

namespace
{

constexpr int32_t DUMPED_BYTES = 48;

// Appends a record; directly in the buffer if there is room for any record.
void render(const RecordRenderer &renderer, const uint8_t *record, TextBuffer &buffer)
{
    if (buffer.size - buffer.length >= renderer.longest) {
        text_end(buffer, renderer.write(record, buffer.text + buffer.length));
    } else {
        char text[RECORD_TEXT_SIZE];
        *renderer.write(record, text) = '\0';
        text_append(buffer, text);
    }
}

void output_text(const RecordFormat &format, const uint8_t *record, StmOutputFn output)
{
    char memory[RECORD_TEXT_SIZE];
    TextBuffer buffer = text_in(memory);
    render_record_text(format, record, buffer);
    output(buffer.text, 1);
}

// Kept: a record without a number is rendered but not output.
void output_csv(const RecordFormat &format, const uint8_t *record, StmOutputFn output)
{
    TextBuffer message = text_in_message();
    render_record_csv(format, record, message);
    if (record[RECORD_NUMBER_AT] != 0) {
        output(message.text, 1);
    }
}

// Kept: for every record of a block the block's first 48 bytes are shown, however long a record is.
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

char *write_signed(char *to, int32_t number)
{
    return write_decimal(to, number);
}

void render_record_text(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer)
{
    render(format.text, record, buffer);
}

void render_csv_header(const RecordFormat &format, TextBuffer &buffer)
{
    for (const RecordField &field : format.fields) {
        text_append(buffer, "\"");
        text_append(buffer, field.name);
        text_append(buffer, "\";");
    }
    text_append(buffer, "\n");
}

void render_record_csv(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer)
{
    render(format.csv, record, buffer);
}

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

} // namespace stm
