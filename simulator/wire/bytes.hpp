// Numbers as bytes. The co-processor sends the lowest byte first, but for the lengths of blocks.
#pragma once

#include "simulator/wire/crc.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace simulator
{

inline uint32_t little_endian(std::span<const uint8_t> bytes)
{
    uint32_t number = 0;
    for (size_t i = bytes.size(); i-- > 0;) {
        number = number << 8 | bytes[i];
    }
    return number;
}

inline std::array<uint8_t, 2> big_endian(uint16_t number)
{
    return {static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
}

// Packs numbers as the records have them.
class ByteWriter
{
  public:
    // The lowest bytes of a number; a negative one is given as the unsigned number of its bits.
    void put(uint64_t number, size_t width)
    {
        for (size_t i = 0; i < width; ++i) {
            bytes_.push_back(static_cast<uint8_t>(number >> (8 * i)));
        }
    }

    void put_signed(int32_t number, size_t width = 4) { put(static_cast<uint32_t>(number), width); }

    std::vector<uint8_t> take() { return std::move(bytes_); }

    // Ends the record with the checksum of all that is in it.
    std::vector<uint8_t> close()
    {
        put(bitwise_crc(bytes_), 2);
        return take();
    }

  private:
    std::vector<uint8_t> bytes_;
};

} // namespace simulator
