// Yardstick: the checksum from a table, one look-up per byte.
#pragma once

#include <cstdint>

namespace bench
{

uint16_t byte_table_crc(const uint8_t *data, uint16_t length);

} // namespace bench
