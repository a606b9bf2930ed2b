// Records as the co-processor writes them. Layouts and checksum are the tests' own.
#pragma once

#include "tests/platform/transcript.hpp"

#include <initializer_list>

enum class RecordKind : uint8_t { base, omega, temp };

size_t record_size(RecordKind kind);

struct FieldValue {
    const char *name; // as the CSV header has it, and "reserved"
    int64_t value;
};

// Zeros, but for the marker and the fields that are named; the checksum is right.
Bytes record(RecordKind kind, std::initializer_list<FieldValue> values);

// Records one after another, with the numbers 1, 2 and so on, and a time stamp each of its own.
Bytes records(RecordKind kind, int count);

// A record whose last byte is a zero.
Bytes record_ending_in_zero(RecordKind kind);

void write_field(Bytes &record, RecordKind kind, const FieldValue &field);

// Gives a record the checksum of what it holds, within the memory that it has.
void seal(Bytes &record);
Bytes sealed(Bytes record);

// The same bytes with all bits of one of them turned over.
Bytes spoiled(Bytes bytes, size_t at);
