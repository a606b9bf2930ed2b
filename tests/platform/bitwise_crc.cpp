// The checksum of the link, bit by bit.
#include "tests/platform/bitwise_crc.hpp"

uint16_t bitwise_crc(const Bytes &bytes)
{
    uint32_t remainder = 0xFFFF;
    for (const uint8_t byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) {
            const uint32_t next = (byte >> bit) & 1U;
            const uint32_t top = (remainder >> 15) & 1U;
            remainder = (remainder << 1) & 0xFFFF;
            remainder ^= top != next ? 0x1021U : 0U;
        }
    }
    return static_cast<uint16_t>(remainder ^ 0xFFFF);
}
