// Work whose instructions are counted from outside: script/count-instructions runs it with two
// lengths, and the difference of the counts is the cost of the additional work.
//
//     counted_work CASE LENGTH
#include "bench/counted_data.hpp"
#include "bench/counted_device.hpp"
#include "bench/yardstick/byte_table.hpp"
#include "bench/yardstick/digit_loop.hpp"
#include "link/stm_com_funcs.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

volatile uint32_t sink = 0; // keeps results from being optimised away

[[noreturn]] void fail(const char *text)
{
    fprintf(stderr, "counted_work: %s\n", text);
    exit(1);
}

// Records as they are in a block, and frames of an image at the same places.
template <uint16_t BYTES, uint16_t (*CRC16)(const uint8_t *, uint16_t)>
void sum_up(int length)
{
    constexpr size_t PLACES = (BLOCK_BYTES - BYTES) / RECORD_BYTES;
    uint32_t sum = 0;
    size_t place = 0;
    for (int i = 0; i < length; ++i) {
        sum += CRC16(counted_blocks[0].data() + RECORD_BYTES * place, BYTES);
        place = place == PLACES ? 0 : place + 1;
    }
    sink = sum;
}

template <char *(*ITOA)(int32_t, char *, int32_t)>
void write_numbers(int length)
{
    char text[34];
    uint32_t sum = 0;
    for (int i = 0; i < length; ++i) {
        sum += static_cast<uint8_t>(
            *ITOA(counted_numbers[static_cast<size_t>(i) % NUMBERS], text, 10));
    }
    sink = sum;
}

int texts = 0;
int messages = 0;
int polls_left = 0;

int take_text(const char *, int more)
{
    ++(more == 1 ? texts : messages);
    return 0;
}

int no_input(char *)
{
    return 0;
}

// The stop line after the last block.
int stop_in_time(char *line)
{
    if (--polls_left >= 0) {
        return 0;
    }
    memcpy(line, STM_STOP_LINE, sizeof(STM_STOP_LINE));
    return 1;
}

template <int MODE>
void read_blocks(int length)
{
    const int records = length * static_cast<int>(BLOCK_RECORDS);
    stm_read_records_temp(records, MODE, no_input, take_text);
    if (messages != 0 || texts != records + (MODE == READOUT_CSV ? 1 : 0)) {
        fail("not every record has been shown");
    }
}

void fill_ring(int length)
{
    polls_left = length;
    RingBuffer_Attach();
    stm_ringbuffer_acquire(stop_in_time, take_text);
    const int records = length * static_cast<int>(BLOCK_RECORDS);
    if (messages != 0 || counted_ring.write_index != records % RINGBUFFER_SLOTS) {
        fail("not every record has been put into the ring");
    }
}

struct Case {
    const char *name;
    void (*run)(int length);
};

constexpr long LONGEST = 1'000'000;

constexpr Case CASES[] = {
    {"crc16_46", sum_up<46, stm_crc16>},
    {"crc16_46_table", sum_up<46, bench::byte_table_crc>},
    {"crc16_1032", sum_up<1032, stm_crc16>},
    {"crc16_1032_table", sum_up<1032, bench::byte_table_crc>},
    {"itoa", write_numbers<stm_itoa>},
    {"itoa_general", write_numbers<bench::digit_loop>},
    {"block_csv", read_blocks<READOUT_CSV>},
    {"block_text", read_blocks<READOUT_TEXT>},
    {"block_exchanges", exchange_read_blocks},
    {"block_ring", fill_ring},
    {"stream_exchanges", exchange_stream_blocks},
};

} // namespace

int main(int argc, char **argv)
{
    const long length = argc == 3 ? strtol(argv[2], nullptr, 10) : 0;
    for (const Case &one : CASES) {
        if (length > 0 && length <= LONGEST && strcmp(argv[1], one.name) == 0) {
            one.run(static_cast<int>(length));
            return 0;
        }
    }
    fputs("usage: counted_work CASE LENGTH; the cases are\n", stderr);
    for (const Case &one : CASES) {
        fprintf(stderr, "  %s\n", one.name);
    }
    return 2;
}
