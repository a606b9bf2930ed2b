// Numbers as bytes. The co-processor sends the lowest byte first, but for the lengths of blocks.
#pragma once

#include "simulator/wire/crc.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

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

// Packs numbers as the records have them, into bytes that have room for all of them.
class ByteWriter
{
  public:
    explicit ByteWriter(std::span<uint8_t> to) : to_(to) {}

    // The lowest bytes of a number; a negative one is given as the unsigned number of its bits.
    void put(uint64_t number, size_t width)
    {
        for (size_t i = 0; i < width; ++i) {
            to_[size_++] = static_cast<uint8_t>(number >> (8 * i));
        }
    }

    void put_signed(int32_t number, size_t width = 4) { put(static_cast<uint32_t>(number), width); }

    // The checksum of all that there is so far, with which a record ends.
    void put_checksum() { put(bitwise_crc(to_.first(size_)), 2); }

    size_t size() const { return size_; }

  private:
    std::span<uint8_t> to_;
    size_t size_ = 0;
};

} // namespace simulator
