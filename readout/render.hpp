// Records as text: the one renderer of every format.
#pragma once

#include "readout/record_format.hpp"
#include "readout/text_buffer.hpp"

// Room for a record of any format as labelled text, and for the hex dump that stands for one.
constexpr int32_t RECORD_TEXT_SIZE = 640;

// The checksum of a record's bytes, and the one that it carries.
uint16_t record_checksum(const RecordFormat &format, const uint8_t *record);
uint16_t record_stored_checksum(const RecordFormat &format, const uint8_t *record);

// True if they are the same.
bool record_checksum_ok(const RecordFormat &format, const uint8_t *record);

// All append to the buffer.
void render_record_text(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer);
void render_csv_header(const RecordFormat &format, TextBuffer &buffer);
void render_record_csv(const RecordFormat &format, const uint8_t *record, TextBuffer &buffer);
