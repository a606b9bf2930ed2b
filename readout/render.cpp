// Records as text.
#include "readout/render.hpp"

#include "link/bytes.hpp"
#include "link/stm_com_funcs.h"

namespace
{

int32_t field_value(const RecordField &field, const uint8_t *record)
{
    const uint8_t *at = record + field.offset;
    switch (field.wire) {
    case Wire::u8:
        return *at;
    case Wire::i8:
        return static_cast<int8_t>(*at);
    case Wire::u16:
        return get_le16(at);
    case Wire::i16:
        return static_cast<int16_t>(get_le16(at));
    case Wire::i32:
        break;
    }
    return static_cast<int32_t>(get_le32(at));
}

void append_csv_value(const RecordField &field, int32_t value, TextBuffer &buffer)
{
    if (field.csv == Csv::with_sign) {
        text_append_signed(buffer, value);
    } else {
        text_append_unsigned(buffer, static_cast<uint32_t>(value));
    }
    text_append(buffer, ";");
}

} // namespace

uint16_t record_checksum(const RecordFormat &format, const uint8_t *record)
{
    return stm_crc16(record, static_cast<uint16_t>(format.size - RECORD_CHECKSUM_SIZE));
}

uint16_t record_stored_checksum(const RecordFormat &format, const uint8_t *record)
{
    return get_le16(record + format.size - RECORD_CHECKSUM_SIZE);
}

bool record_checksum_ok(const RecordFormat &format, const uint8_t *record)
{
    return record_checksum(format, record) == record_stored_checksum(format, record);
}

// Kept: every number is shown signed here, also those that CSV shows without a sign.
void render_record_text(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer)
{
    for (const RecordField &field : format.fields) {
        text_append(buffer, field.label);
        text_append_signed(buffer, field_value(field, record));
        text_append(buffer, field.line == Line::ends_group ? "\n\n" : "\n");
    }
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
    for (const RecordField &field : format.fields) {
        append_csv_value(field, field_value(field, record), buffer);
    }
    text_append(buffer, "\n");
}
