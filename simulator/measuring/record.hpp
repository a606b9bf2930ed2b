// The records in which samples are delivered, one kind for each kind of request.
#pragma once

#include "simulator/measuring/measurement.hpp"

#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator
{

struct RecordFormat {
    uint8_t code; // of the request
    bool has_external_counter;
    int most; // records in one block
    size_t size;
    size_t input_width;       // of the two words of binary inputs
    uint16_t Sample::*second; // the quantity after the number; null if its place is unused
};

// Null if the code does not request records.
const RecordFormat *find_record_format(uint8_t code);

// A whole record with its checksum, as long as its format says. buffered is the number of records
// waiting after it.
void write_record(std::span<uint8_t> record, const RecordFormat &format, const Sample &sample,
                  uint8_t buffered);

} // namespace simulator
