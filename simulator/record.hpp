// The records in which samples are handed over, one kind for each kind of request.
#pragma once

#include "simulator/measurement.hpp"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace simulator
{

struct RecordFormat {
    uint8_t code; // of the request
    bool has_external_counter;
    int most; // records of one block
    size_t size;
    size_t input_width;       // of the two words of binary inputs
    uint16_t Sample::*second; // the quantity behind the number; null if its place is unused
};

// Null if the code asks for no records.
const RecordFormat *find_record_format(uint8_t code);

// A whole record with its checksum. buffered is how many records wait behind it.
std::vector<uint8_t> write_record(const RecordFormat &format, const Sample &sample,
                                  uint8_t buffered);

} // namespace simulator
