// Records as text, by the C library.
#include "bench/yardstick/plain_render.hpp"

#include "bench/wire_record.hpp"
#include "bench/yardstick/digit_loop.hpp"

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace bench
{

namespace
{

constexpr size_t NUMBER_SIZE = 34;
constexpr size_t PLAIN_LINE_SIZE = 64;

void add_signed(char *text, int32_t value)
{
    char digits[NUMBER_SIZE];
    strcat(text, digit_loop(value, digits, 10));
    strcat(text, ";");
}

void add_unsigned(char *text, uint32_t value)
{
    char digits[NUMBER_SIZE];
    strcat(text, digit_loop_unsigned(value, digits, 10));
    strcat(text, ";");
}

} // namespace

void csv_by_snprintf(const uint8_t *record, char *text)
{
    const WireRecord r = wire_record(record);
    snprintf(text, PLAIN_TEXT_SIZE, "%d;%d;%" PRIu32 ";%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;%d;\n",
             r.nr, r.temp, r.rel_t, r.U1e, r.U2e, r.U3e, r.Uen, r.I1, r.I2, r.I3, r.negIe, r.BE1,
             r.BE2, r.BE, r.buffered, r.checksum);
}

void csv_by_strcat(const uint8_t *record, char *text)
{
    const WireRecord r = wire_record(record);
    text[0] = '\0';
    add_signed(text, r.nr);
    add_signed(text, r.temp);
    add_unsigned(text, r.rel_t);
    add_signed(text, r.U1e);
    add_signed(text, r.U2e);
    add_signed(text, r.U3e);
    add_signed(text, r.Uen);
    add_signed(text, r.I1);
    add_signed(text, r.I2);
    add_signed(text, r.I3);
    add_signed(text, r.negIe);
    add_signed(text, r.BE1);
    add_signed(text, r.BE2);
    add_signed(text, r.BE);
    add_signed(text, r.buffered);
    add_signed(text, r.checksum);
    strcat(text, "\n");
}

void text_by_snprintf(const uint8_t *record, char *text)
{
    const WireRecord r = wire_record(record);
    snprintf(text, PLAIN_TEXT_SIZE,
             "stm_uint8_t  nr   : %d\n"
             "stm_uint16_t omega_t : %d\n"
             "stm_int32_t  rel_t: %d\n\n"
             "stm_int32_t  U1e  : %d\n"
             "stm_int32_t  U2e  : %d\n"
             "stm_int32_t  U3e  : %d\n"
             "stm_int32_t  Uen  : %d\n\n"
             "stm_int32_t  I1   : %d\n"
             "stm_int32_t  I2   : %d\n"
             "stm_int32_t  I3   : %d\n"
             "stm_int32_t  -Ie  : %d\n\n"
             "stm_int16_t  BE1  : %d\n"
             "stm_int16_t  BE2  : %d\n"
             "stm_int8_t   BE   : %d\n"
             "stm_uint8    buffered  : %d\n"
             "stm_int8_t   checksum  : %d\n\n",
             r.nr, r.temp, static_cast<int32_t>(r.rel_t), r.U1e, r.U2e, r.U3e, r.Uen, r.I1, r.I2,
             r.I3, r.negIe, r.BE1, r.BE2, r.BE, r.buffered, r.checksum);
}

void text_by_lines(const uint8_t *record, char *text)
{
    const WireRecord r = wire_record(record);
    char line[PLAIN_LINE_SIZE];
    text[0] = '\0';
    sprintf(line, "stm_uint8_t  nr   : %d\n", r.nr);
    strcat(text, line);
    sprintf(line, "stm_uint16_t omega_t : %d\n", r.temp);
    strcat(text, line);
    sprintf(line, "stm_int32_t  rel_t: %d\n\n", static_cast<int32_t>(r.rel_t));
    strcat(text, line);
    sprintf(line, "stm_int32_t  U1e  : %d\n", r.U1e);
    strcat(text, line);
    sprintf(line, "stm_int32_t  U2e  : %d\n", r.U2e);
    strcat(text, line);
    sprintf(line, "stm_int32_t  U3e  : %d\n", r.U3e);
    strcat(text, line);
    sprintf(line, "stm_int32_t  Uen  : %d\n\n", r.Uen);
    strcat(text, line);
    sprintf(line, "stm_int32_t  I1   : %d\n", r.I1);
    strcat(text, line);
    sprintf(line, "stm_int32_t  I2   : %d\n", r.I2);
    strcat(text, line);
    sprintf(line, "stm_int32_t  I3   : %d\n", r.I3);
    strcat(text, line);
    sprintf(line, "stm_int32_t  -Ie  : %d\n\n", r.negIe);
    strcat(text, line);
    sprintf(line, "stm_int16_t  BE1  : %d\n", r.BE1);
    strcat(text, line);
    sprintf(line, "stm_int16_t  BE2  : %d\n", r.BE2);
    strcat(text, line);
    sprintf(line, "stm_int8_t   BE   : %d\n", r.BE);
    strcat(text, line);
    sprintf(line, "stm_uint8    buffered  : %d\n", r.buffered);
    strcat(text, line);
    sprintf(line, "stm_int8_t   checksum  : %d\n\n", r.checksum);
    strcat(text, line);
}

void hex_by_snprintf(const uint8_t *bytes, int32_t count, char *text)
{
    constexpr int32_t BYTE_TEXT = 5;
    for (int32_t i = 0; i < count; ++i, text += BYTE_TEXT) {
        snprintf(text, BYTE_TEXT + 1, "0x%02X ", bytes[i]);
    }
}

} // namespace bench
