// A text that grows within fixed bounds. What does not fit is left out; a NUL always ends it.
#pragma once

#include <cstdint>

namespace stm
{

struct TextBuffer {
    char *text;
    int32_t size; // of the memory at text, NUL included
    int32_t length;
};

// The link's message: emptied, and with what it still holds.
TextBuffer text_in_message();
TextBuffer text_behind_message();

template <int32_t SIZE>
TextBuffer text_in(char (&memory)[SIZE])
{
    memory[0] = '\0';
    return {memory, SIZE, 0};
}

void text_clear(TextBuffer &buffer);
void text_append(TextBuffer &buffer, const char *text);

// Ends the text at end, up to which it has been written, within its bounds.
void text_end(TextBuffer &buffer, char *end);

[[gnu::format(printf, 2, 3)]] void text_format(TextBuffer &buffer, const char *format, ...);

// A number in decimal.
void text_append_signed(TextBuffer &buffer, int32_t number);
void text_append_unsigned(TextBuffer &buffer, uint32_t number);

// Bytes, each as "0x%02X ".
void text_append_hex(TextBuffer &buffer, const uint8_t *bytes, int32_t count);

} // namespace stm
