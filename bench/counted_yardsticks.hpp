// The plain ways to do what the module does, against which its instructions are counted.
#pragma once

#include <cstdint>

// One look-up a byte.
uint16_t yardstick_crc16(const uint8_t *data, uint16_t length);

// A division a digit, by a divisor that only the caller knows.
char *yardstick_itoa(int32_t value, char *buffer, int32_t base);
