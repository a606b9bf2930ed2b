// Blocks of records as a board hands them over, faults included.
#pragma once

#include "simulator/faults.hpp"
#include "simulator/record.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace simulator
{

inline constexpr size_t LARGEST_BLOCK = 4096;

struct Block {
    std::vector<uint8_t> bytes; // filled up with zeros to the length, if that is larger
    uint16_t length = 0;        // as it is announced
    std::string name;           // for the person who reads the dialogue
};

class RecordSource
{
  public:
    RecordSource(uint32_t seed, Faults faults);

    // Takes the next sample, and has it as a record.
    std::vector<uint8_t> next_record(const RecordFormat &format);

    // Puts records into the next block.
    Block make_block(const RecordFormat &format, std::vector<uint8_t> records);

  private:
    const Fault *find(FaultKind kind, uint32_t place) const;

    uint32_t seed_;
    Faults faults_;
    uint32_t samples_ = 0; // taken since power on
    uint32_t blocks_ = 0;
};

} // namespace simulator
