// A text that grows within fixed bounds.
#include "readout/text_buffer.hpp"

#include "link/decimal.hpp"
#include "link/link.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace stm
{

namespace
{

struct HexPairs {
    char text[256][2]; // "00" to "FF"
};

consteval HexPairs hex_pairs()
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    HexPairs all = {};
    for (int byte = 0; byte < 256; ++byte) {
        all.text[byte][0] = DIGITS[byte >> 4];
        all.text[byte][1] = DIGITS[byte & 0xF];
    }
    return all;
}
constexpr HexPairs HEX_PAIRS = hex_pairs();

constexpr int32_t HEX_WIDTH = sizeof("0xFF ") - 1;

void write_hex(char *to, uint8_t byte)
{
    to[0] = '0';
    to[1] = 'x';
    memcpy(to + 2, HEX_PAIRS.text[byte], 2);
    to[4] = ' ';
}

void append_bytes(TextBuffer &buffer, const char *text, size_t length)
{
    const auto room = static_cast<size_t>(buffer.size - 1 - buffer.length);
    const size_t taken = length < room ? length : room;
    memcpy(buffer.text + buffer.length, text, taken);
    buffer.length += static_cast<int32_t>(taken);
    buffer.text[buffer.length] = '\0';
}

} // namespace

TextBuffer text_in_message()
{
    return text_in(stm_link.message);
}

TextBuffer text_behind_message()
{
    const size_t length = strnlen(stm_link.message, sizeof(stm_link.message) - 1);
    return {stm_link.message, STM_MESSAGE_SIZE, static_cast<int32_t>(length)};
}

void text_clear(TextBuffer &buffer)
{
    buffer.length = 0;
    buffer.text[0] = '\0';
}

void text_append(TextBuffer &buffer, const char *text)
{
    append_bytes(buffer, text, strlen(text));
}

void text_end(TextBuffer &buffer, char *end)
{
    *end = '\0';
    buffer.length = static_cast<int32_t>(end - buffer.text);
}

void text_format(TextBuffer &buffer, const char *format, ...)
{
    const int32_t room = buffer.size - buffer.length;
    va_list arguments;
    va_start(arguments, format);
    const int length =
        vsnprintf(buffer.text + buffer.length, static_cast<size_t>(room), format, arguments);
    va_end(arguments);
    buffer.length += length < room ? length : room - 1;
}

void text_append_signed(TextBuffer &buffer, int32_t number)
{
    char digits[LONGEST_DECIMAL + 1];
    append_bytes(buffer, digits, static_cast<size_t>(write_decimal(digits, number) - digits));
}

void text_append_unsigned(TextBuffer &buffer, uint32_t number)
{
    char digits[LONGEST_DECIMAL + 1];
    append_bytes(buffer, digits, static_cast<size_t>(write_decimal(digits, number) - digits));
}

// The bytes that have room are written in place, the next one as far as it fits.
void text_append_hex(TextBuffer &buffer, const uint8_t *bytes, int32_t count)
{
    const int32_t room = (buffer.size - 1 - buffer.length) / HEX_WIDTH;
    const int32_t whole = count < room ? count : room;
    char *to = buffer.text + buffer.length;
    for (int32_t i = 0; i < whole; ++i, to += HEX_WIDTH) {
        write_hex(to, bytes[i]);
    }
    text_end(buffer, to);
    if (whole < count) {
        char piece[HEX_WIDTH];
        write_hex(piece, bytes[whole]);
        append_bytes(buffer, piece, sizeof(piece));
    }
}

} // namespace stm
