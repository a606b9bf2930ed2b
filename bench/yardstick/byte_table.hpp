// Yardstick: the checksum by a table, one look-up a byte.
#pragma once

#include <cstdint>

namespace bench
{

uint16_t byte_table_crc(const uint8_t *data, uint16_t length);

} // namespace bench
