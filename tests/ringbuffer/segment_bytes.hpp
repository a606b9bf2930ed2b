// The segment as bytes: where its control fields lie, and what they hold.
#pragma once

#include "tests/platform/transcript.hpp"

enum Field : size_t {
    WRITER_OPEN = 7680, // one byte
    READER_OPEN = 7681, // one byte
    PADDING = 7682,     // two bytes
    WRITE_INDEX = 7684, // from here on four bytes each
    MARK = 7688,
    READ_POS = 7692,
    COUNT = 7696,
    VALUES_LEFT = 7700,
};

constexpr size_t SEGMENT_SIZE = 7704;
constexpr int SLOTS = 160;
constexpr int SLOT_SIZE = 48;

constexpr Field INDEX_FIELDS[] = {WRITE_INDEX, MARK, READ_POS, COUNT, VALUES_LEFT};

struct Setting {
    Field field;
    int32_t value;
};

int32_t field_of(const uint8_t *segment, Field field);
void set_field(uint8_t *segment, const Setting &setting);

// Equal throughout; a failure shows the first difference.
testing::AssertionResult same_segment(const Bytes &actual, const Bytes &expected);
