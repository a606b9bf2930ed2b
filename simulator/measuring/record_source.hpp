// Blocks of records as a board delivers them, faults included.
#pragma once

#include "simulator/faults/faults.hpp"
#include "simulator/measuring/record.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace simulator
{

inline constexpr size_t LARGEST_BLOCK = 4096;

struct Block {
    std::vector<uint8_t> bytes; // padded with zeros up to the length, if that is larger
    uint16_t length = 0;        // as announced
    std::string name;           // for people who read the dialogue
    size_t records = 0;         // that were put into it
    size_t whole = 0;           // of them that a host receives whole
};

class RecordSource
{
  public:
    RecordSource(uint32_t seed, Faults faults);

    // The number of samples taken since power on, whether delivered or skipped.
    uint32_t samples() const { return samples_; }
    void skip(uint32_t samples) { samples_ += samples; }

    // One of them as a record.
    std::vector<uint8_t> write(const RecordFormat &format, uint32_t number, uint8_t buffered) const;

    // Puts records into the next block.
    Block make_block(const RecordFormat &format, std::vector<uint8_t> records);

  private:
    const Fault *find(FaultKind kind, uint32_t place) const;

    uint32_t seed_;
    Faults faults_;
    uint32_t samples_ = 0;
    uint32_t blocks_ = 0;
};

} // namespace simulator
