// Writes the co-processor's packed, little-endian records.
#pragma once

#include "simulator/wire/crc.hpp"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace simulator
{

class ByteWriter
{
  public:
    // The lowest bytes of a number; a negative one is given as the unsigned number of its bits.
    void put(uint32_t number, size_t width)
    {
        for (size_t i = 0; i < width; ++i) {
            bytes_.push_back(static_cast<uint8_t>(number >> (8 * i)));
        }
    }

    void put_signed(int32_t number, size_t width = 4) { put(static_cast<uint32_t>(number), width); }

    // Ends the record with the checksum of all that is in it.
    std::vector<uint8_t> close()
    {
        put(bitwise_crc(bytes_), 2);
        return std::move(bytes_);
    }

  private:
    std::vector<uint8_t> bytes_;
};

} // namespace simulator
