// Records as the co-processor sends them, and as front ends have always seen them. Every character
// is written out.
#pragma once

#include "tests/platform/transcript.hpp"
#include "tests/readout/record_writer.hpp"

struct GoldenRecord {
    const char *what;
    Bytes bytes; // with their checksum
    std::string text;
    std::string csv;
};

extern const std::vector<GoldenRecord> GOLDEN_BASE;
extern const std::vector<GoldenRecord> GOLDEN_OMEGA;
extern const std::vector<GoldenRecord> GOLDEN_TEMP;

extern const char GOLDEN_BASE_HEADER[];
extern const char GOLDEN_OMEGA_HEADER[];
extern const char GOLDEN_TEMP_HEADER[];

// For each kind in this order: an ordinary record, one with the sign in every byte, the greatest
// values, the least, ones, zeros.
const std::vector<GoldenRecord> &golden_records(RecordKind kind);
const char *golden_header(RecordKind kind);
