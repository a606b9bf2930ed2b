// A text that grows within fixed bounds.
#include "readout/text_buffer.hpp"

#include "link/link.hpp"
#include "link/stm_com_funcs.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace
{

constexpr int32_t NUMBER_SIZE = 34; // the longest number in any base

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
    char digits[NUMBER_SIZE];
    text_append(buffer, stm_itoa(number, digits, 10));
}

void text_append_unsigned(TextBuffer &buffer, uint32_t number)
{
    char digits[NUMBER_SIZE];
    text_append(buffer, stm_utoa(number, digits, 10));
}

void text_append_hex(TextBuffer &buffer, const uint8_t *bytes, int32_t count)
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    for (int32_t i = 0; i < count; ++i) {
        const char piece[] = {'0', 'x', DIGITS[bytes[i] >> 4], DIGITS[bytes[i] & 0xF], ' '};
        append_bytes(buffer, piece, sizeof(piece));
    }
}
