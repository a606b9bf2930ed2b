// Blocks of records as a board delivers them, faults included.
#pragma once

#include "simulator/faults/faults.hpp"
#include "simulator/measuring/record.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

inline constexpr size_t LARGEST_BLOCK = 4096; // bytes of a block that a host fetches

// What a board measures, and how it delivers a stream.
struct Measuring {
    uint32_t seed;
    int rate;         // samples of a stream per second
    int header_index; // of a block's header in a poll of a stream, or ANY_HEADER_INDEX
    const Faults &faults;
};

// A block whose bytes are elsewhere.
struct Block {
    uint32_t number = 0;
    uint16_t records = 0; // that were put into it
    uint16_t whole = 0;   // of them that a host receives whole
    uint16_t length = 0;  // as announced
    uint16_t size = 0;    // of its bytes: the length, if that is larger than what was put into it,
                          // but at most LARGEST_BLOCK
};

// For people who read the dialogue.
std::string name_of(const Block &block);

using BlockBytes = std::span<uint8_t, LARGEST_BLOCK>;

class RecordSource
{
  public:
    // The number of samples taken since power on, whether delivered or skipped.
    uint32_t samples() const { return samples_; }
    void skip(uint32_t samples) { samples_ += samples; }

    // Makes the next block of the records at the beginning of the bytes.
    Block make_block(const Measuring &measuring, const RecordFormat &format, size_t records,
                     BlockBytes bytes);

  private:
    uint32_t samples_ = 0;
    uint32_t blocks_ = 0;
};

// Writes a sample as a record. buffered is the number of records waiting after it.
void write_measured(std::span<uint8_t> record, const Measuring &measuring,
                    const RecordFormat &format, uint32_t number, uint8_t buffered);

} // namespace simulator
