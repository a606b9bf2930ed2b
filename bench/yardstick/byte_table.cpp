// CRC-16/GENIBUS, byte by byte.
#include "bench/yardstick/byte_table.hpp"

#include <array>

namespace bench
{

namespace
{

constexpr std::array<uint16_t, 256> TABLE = [] {
    std::array<uint16_t, 256> table = {};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t remainder = i << 8;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder << 1) ^ ((remainder & 0x8000) != 0 ? 0x11021 : 0);
        }
        table[i] = static_cast<uint16_t>(remainder);
    }
    return table;
}();

} // namespace

uint16_t byte_table_crc(const uint8_t *data, uint16_t length)
{
    uint16_t crc = 0xFFFF;
    for (uint32_t i = 0; i < length; ++i) {
        crc = static_cast<uint16_t>(TABLE[data[i] ^ (crc >> 8)] ^ (crc << 8));
    }
    return static_cast<uint16_t>(~crc);
}

} // namespace bench
