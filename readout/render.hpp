// Records as text, and their output in the mode that the caller of a read-out asks for.
#pragma once

#include "link/bytes.hpp"
#include "link/stm_com_funcs.h"
#include "readout/record_format.hpp"
#include "readout/text_buffer.hpp"

namespace stm
{

// The checksum computed over a record's bytes, and the one stored in it.
inline uint16_t record_checksum(const RecordFormat &format, const uint8_t *record)
{
    return stm_crc16(record, static_cast<uint16_t>(format.size - RECORD_CHECKSUM_SIZE));
}

inline uint16_t record_stored_checksum(const RecordFormat &format, const uint8_t *record)
{
    return get_le16(record + format.size - RECORD_CHECKSUM_SIZE);
}

// True if they are the same.
inline bool record_checksum_ok(const RecordFormat &format, const uint8_t *record)
{
    return record_checksum(format, record) == record_stored_checksum(format, record);
}

// All append to the buffer.
void render_record_text(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer);
void render_csv_header(const RecordFormat &format, TextBuffer &buffer);
void render_record_csv(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer);

// The CSV header, in the CSV mode.
void output_csv_header(const RecordFormat &format, int mode, StmOutputFn output);

// One record of the block in rx_buffer. An unknown mode shows nothing.
void output_record(const RecordFormat &format, const uint8_t *record, int mode, StmOutputFn output);

} // namespace stm
