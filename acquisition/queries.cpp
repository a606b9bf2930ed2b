// The queries of single values: one row each, one line each, and one algorithm for all of them. A
// transaction gives the length of the reply; then the reply is fetched and printed by its kind.
#include "acquisition/code_table.hpp"
#include "acquisition/reply.hpp"
#include "link/bytes.hpp"
#include "link/link.hpp"
#include "link/stm_com_funcs.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

using namespace stm;

namespace
{

enum class Reply : uint8_t { first_byte, number16, number32, text };

struct Query {
    uint8_t code;
    Reply reply;
    uint8_t last_channel;
    const char *noun; // of the channel in the error text; null if the query has none
};

// clang-format off
constexpr Query QUERIES[] = {
    {0x73, Reply::first_byte, 0, nullptr},
    {0xC7, Reply::first_byte, 0, nullptr},
    {0x05, Reply::first_byte, 0, nullptr},
    {0x04, Reply::first_byte, 0, nullptr},
    {0xA0, Reply::number32,   0, nullptr},
    {0x03, Reply::number16,   0, nullptr},
    {0x21, Reply::text,       0, nullptr},
    {0x22, Reply::text,       0, nullptr},
    {0x06, Reply::number32,   7, "ADC channel"},
    {0x07, Reply::number32,   7, "ADC channel"},
    {0x08, Reply::number16,   1, "channel"},
    {0x09, Reply::number16,   1, "channel"},
    {0x0A, Reply::number16,   1, "channel"},
    {0x0B, Reply::number16,   1, "channel"},
    {0x0C, Reply::number16,   1, "channel"},
    {0x0D, Reply::number16,   1, "channel"},
    {0x95, Reply::number16,   1, "BE channel"},
    {0x96, Reply::number16,   1, "BE channel"},
    {0x99, Reply::number32,   7, "ADC channel"},
    {0x9A, Reply::number32,   7, "BE channel"}, // Kept: says BE, although it has eight channels
};
// clang-format on

consteval bool channels_are_sound()
{
    for (const Query &row : QUERIES) {
        if (row.noun == nullptr && row.last_channel != 0) {
            return false;
        }
    }
    return true;
}
static_assert(codes_are_unique(QUERIES), "a query's code stands twice");
static_assert(channels_are_sound(), "a query has channels, but no noun for them");

consteval const Query &query(uint8_t code)
{
    return row_of(QUERIES, code);
}

constexpr int32_t TEXT_SIZE = 128;

// Kept: nothing here uses the link's message buffer.
[[gnu::format(printf, 2, 3)]] void print(StmOutputFn output, const char *format, ...)
{
    char text[TEXT_SIZE];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    output(text, 0);
}

void print_text(int32_t length, StmOutputFn output)
{
    constexpr int32_t MOST = TEXT_SIZE - 2; // a line feed and a NUL follow
    char text[TEXT_SIZE];
    const size_t taken = static_cast<size_t>(length < MOST ? length : MOST);
    memcpy(text, stm_link.rx_buffer, taken);
    memcpy(text + taken, "\n", 2);
    output(text, 0);
}

void print_reply(Reply kind, int32_t length, StmOutputFn output)
{
    switch (kind) {
    case Reply::first_byte:
        print(output, "%d\n", stm_link.rx_buffer[0]);
        break;
    case Reply::number16:
        print(output, "%d\n", static_cast<int16_t>(reply_number(length, 2)));
        break;
    case Reply::number32:
        // long has 64 bits on some hosts: the number goes through its 32-bit type.
        print(output, "%ld\n", static_cast<long>(static_cast<int32_t>(reply_number(length, 4))));
        break;
    case Reply::text:
        print_text(length, output);
        break;
    }
}

void ask(const Query &row, int channel, StmPollFn poll, StmOutputFn output)
{
    if (row.noun != nullptr && static_cast<uint32_t>(channel) > row.last_channel) {
        print(output, "Wrong %s (%d)\n", row.noun, channel);
        return;
    }
    const int32_t length =
        stm_command(row.code, low_byte(static_cast<uint32_t>(channel)), 0, 0, 0, poll, output);
    if (stm_read_reply(length)) {
        print_reply(row.reply, length, output);
    }
}

} // namespace

void stm_query_byte_value_73(StmPollFn poll, StmOutputFn output)
{
    ask(query(0x73), 0, poll, output);
}

void stm_query_byte_value_C7(StmPollFn poll, StmOutputFn output)
{
    ask(query(0xC7), 0, poll, output);
}

void stm_query_byte_value_05(StmPollFn poll, StmOutputFn output)
{
    ask(query(0x05), 0, poll, output);
}

void stm_query_byte_value_04(StmPollFn poll, StmOutputFn output)
{
    ask(query(0x04), 0, poll, output);
}

void stm_query_long(StmPollFn poll, StmOutputFn output)
{
    ask(query(0xA0), 0, poll, output);
}

void stm_query_short(StmPollFn poll, StmOutputFn output)
{
    ask(query(0x03), 0, poll, output);
}

void stm_query_text_21(StmPollFn poll, StmOutputFn output)
{
    ask(query(0x21), 0, poll, output);
}

void stm_query_text_22(StmPollFn poll, StmOutputFn output)
{
    ask(query(0x22), 0, poll, output);
}

void stm_query_channel_06(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x06), channel, poll, output);
}

void stm_query_channel_07(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x07), channel, poll, output);
}

void stm_query_channel_08(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x08), channel, poll, output);
}

void stm_query_channel_09(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x09), channel, poll, output);
}

void stm_query_channel_0A(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x0A), channel, poll, output);
}

void stm_query_channel_0B(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x0B), channel, poll, output);
}

void stm_query_channel_0C(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x0C), channel, poll, output);
}

void stm_query_channel_0D(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x0D), channel, poll, output);
}

void stm_query_channel_95(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x95), channel, poll, output);
}

void stm_query_channel_96(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x96), channel, poll, output);
}

void stm_query_channel_99(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x99), channel, poll, output);
}

void stm_query_channel_9A(int channel, StmPollFn poll, StmOutputFn output)
{
    ask(query(0x9A), channel, poll, output);
}
