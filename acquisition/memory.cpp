// Reads by address: 'b' fetches the byte at an address, 'u' a range that starts there.
#include "acquisition/reply.hpp"
#include "link/bytes.hpp"
#include "link/link.hpp"
#include "link/stm_com_funcs.h"

#include <cstddef>
#include <cstdio>

using namespace stm;

namespace
{

constexpr int32_t LONGEST_TEXT = 50;

// Fetches the byte at an address to the start of rx_buffer.
// Kept: an empty reply counts as a reply; the byte received last is then used.
bool fetch_byte(uint16_t address, StmPollFn poll, StmOutputFn output)
{
    return stm_read_reply(
        stm_command(STM_CMD_READ_BYTE, low_byte(address), high_byte(address), 0, 0, poll, output));
}

void print_character(uint8_t byte, const char *end, int more, StmOutputFn output)
{
    char text[4];
    snprintf(text, sizeof(text), "%c%s", byte, end);
    output(text, more);
}

} // namespace

int32_t stm_read_char(uint16_t address, StmPollFn poll, StmOutputFn output)
{
    if (!fetch_byte(address, poll, output)) {
        return 0xFF;
    }
    const uint8_t byte = stm_link.rx_buffer[0];
    print_character(byte, "\n", 0, output);
    return byte;
}

int16_t stm_read_byte(uint16_t address, StmPollFn poll, StmOutputFn output)
{
    if (!fetch_byte(address, poll, output)) {
        return -1;
    }
    const uint8_t byte = stm_link.rx_buffer[0];
    char text[sizeof("255\n")];
    snprintf(text, sizeof(text), "%d\n", byte);
    output(text, 0);
    return byte;
}

uint32_t stm_read_u32_be(uint16_t address, StmPollFn poll, StmOutputFn output)
{
    uint32_t number = 0;
    for (uint32_t i = 0; i < 4; ++i) {
        const int32_t byte = stm_read_byte(static_cast<uint16_t>(address + i), poll, output);
        // Kept: a byte that cannot be read is -1, and sign extension sets all bytes above it.
        number = number << 8 | static_cast<uint32_t>(byte);
    }
    return number;
}

uint32_t stm_read_top_block(uint8_t destination[48], StmPollFn poll, StmOutputFn output)
{
    uint32_t word = 0;
    for (int32_t i = 0; i < STM_TOP_BLOCK_WORDS; ++i) {
        word = stm_read_u32_be(static_cast<uint16_t>(STM_TOP_BLOCK_ADDR + 4 * i), poll, output);
        put_le32(destination + ptrdiff_t{4} * i, word);
    }
    return word;
}

int32_t stm_print_text_at(uint16_t address, StmPollFn poll, StmOutputFn output)
{
    int32_t count = 0;
    uint8_t byte = 0;
    do {
        if (!fetch_byte(address, poll, output)) {
            return -1;
        }
        byte = stm_link.rx_buffer[0];
        print_character(byte, "", 1, output);
        ++count;
    } while (count < LONGEST_TEXT && byte != 0);
    output("\n", 0);
    return count;
}

int32_t stm_dump_bytes(uint16_t address, uint16_t count, StmPollFn poll, StmOutputFn output)
{
    const int32_t length = stm_command(STM_CMD_READ_RANGE, low_byte(address), high_byte(address),
                                       low_byte(count), high_byte(count), poll, output);
    if (!stm_read_reply(length)) {
        return -1;
    }
    // Kept: count bytes are printed, whatever the length of the reply.
    const int32_t printed = count < STM_BUFFER_SIZE ? count : STM_BUFFER_SIZE;
    for (int32_t i = 0; i < printed; ++i) {
        const bool last = i == printed - 1;
        char text[sizeof("0xFF\n")];
        snprintf(text, sizeof(text), last ? "0x%X\n" : "0x%X;", stm_link.rx_buffer[i]);
        output(text, last ? 0 : 1);
    }
    return length;
}
