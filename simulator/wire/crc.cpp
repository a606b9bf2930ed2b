// The checksum of the wire, bit by bit.
#include "simulator/wire/crc.hpp"

namespace simulator
{

uint16_t bitwise_crc(std::span<const uint8_t> bytes)
{
    uint32_t shift_register = 0xFFFF;
    for (const uint8_t byte : bytes) {
        for (uint32_t mask = 0x80; mask != 0; mask >>= 1) {
            const bool top = (shift_register & 0x8000) != 0;
            const bool bit = (byte & mask) != 0;
            shift_register = (shift_register << 1) & 0xFFFF;
            if (top != bit) {
                shift_register ^= 0x1021;
            }
        }
    }
    return static_cast<uint16_t>(shift_register ^ 0xFFFF);
}

} // namespace simulator
