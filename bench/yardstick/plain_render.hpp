// Yardsticks: a record with a temperature as text, by the C library and plain loops. All of them
// write a whole text to the buffer, including the NUL.
#pragma once

#include <cstdint>

namespace bench
{

constexpr int32_t PLAIN_TEXT_SIZE = 640; // the longest record as labelled text

void csv_by_snprintf(const uint8_t *record, char *text);
void csv_by_strcat(const uint8_t *record, char *text); // and digit loops
void csv_by_fmt(const uint8_t *record, char *text);    // with a format parsed by the compiler

void text_by_snprintf(const uint8_t *record, char *text);
void text_by_lines(const uint8_t *record, char *text); // one sprintf per line

// "0x%02X " for each byte, one snprintf each.
void hex_by_snprintf(const uint8_t *bytes, int32_t count, char *text);

} // namespace bench
