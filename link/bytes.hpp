// Numbers of the wire, read and written byte by byte: the buffers have no alignment, and the host
// may have either byte order.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace stm
{

constexpr uint8_t low_byte(uint32_t value)
{
    return static_cast<uint8_t>(value);
}

constexpr uint8_t high_byte(uint32_t word)
{
    return static_cast<uint8_t>(word >> 8);
}

constexpr void put_le16(uint8_t *to, uint16_t value)
{
    to[0] = low_byte(value);
    to[1] = high_byte(value);
}

constexpr void put_le32(uint8_t *to, uint32_t value)
{
    put_le16(to, static_cast<uint16_t>(value));
    put_le16(to + 2, static_cast<uint16_t>(value >> 16));
}

constexpr uint16_t get_le16(const uint8_t *from)
{
    return static_cast<uint16_t>(from[0] | from[1] << 8);
}

constexpr uint32_t get_le32(const uint8_t *from)
{
    return get_le16(from) | uint32_t{get_le16(from + 2)} << 16;
}

constexpr uint16_t get_be16(const uint8_t *from)
{
    return static_cast<uint16_t>(from[0] << 8 | from[1]);
}

// A word of 32 or 64 bits, in one load.
template <typename Word>
Word get_be(const uint8_t *from)
{
    static_assert(sizeof(Word) == 4 || sizeof(Word) == 8);
    Word word;
    memcpy(&word, from, sizeof(word));
    if constexpr (std::endian::native == std::endian::big) {
        return word;
    } else if constexpr (sizeof(Word) == 8) {
        return __builtin_bswap64(word);
    } else {
        return __builtin_bswap32(word);
    }
}

} // namespace stm
