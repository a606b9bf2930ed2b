// The plain read-out.
#include "bench/yardstick/plain_readout.hpp"

#include "bench/data_set.hpp"
#include "bench/wire_record.hpp"
#include "bench/yardstick/byte_table.hpp"
#include "bench/yardstick/plain_link.hpp"
#include "bench/yardstick/plain_render.hpp"

#include <algorithm>

namespace bench
{

namespace
{

constexpr uint8_t COMMAND = 0x02;
constexpr uint8_t POLL = 0x44;
constexpr uint8_t READY = 0x55;

PlainLink plain_link;

void request(int32_t remaining)
{
    plain_link.request(COMMAND, static_cast<uint8_t>(std::min(remaining, BLOCK_RECORDS)));
}

void wait_for_block(StmPollFn poll)
{
    char line[STM_LINE_SIZE];
    plain_link.clear();
    do {
        plain_link.tx[0] = POLL;
        plain_link.exchange(1);
    } while (poll(line) == 0 && plain_link.rx[0] != READY);
}

int32_t fetch_length()
{
    plain_link.tx[0] = 0;
    plain_link.tx[1] = 0;
    plain_link.exchange(2);
    return plain_link.rx[0] << 8 | plain_link.rx[1];
}

void show_records(int32_t length, PlainRender render, StmOutputFn output)
{
    char text[PLAIN_TEXT_SIZE];
    for (int32_t at = 0; at < length; at += RECORD_SIZE) {
        const uint8_t *record = plain_link.rx + at;
        if (byte_table_crc(record, CHECKED_BYTES) != wire_record(record).checksum) {
            return;
        }
        render(record, text);
        output(text, 1);
    }
}

} // namespace

void plain_read_records(int32_t count, const char *header, PlainRender render, StmPollFn poll,
                        StmOutputFn output)
{
    if (header != nullptr) {
        output(header, 1);
    }
    int32_t remaining = count;
    request(remaining);
    do {
        wait_for_block(poll);
        const int32_t length = fetch_length();
        plain_link.fetch(static_cast<uint32_t>(length));
        remaining -= length / RECORD_SIZE;
        if (remaining > 0) {
            request(remaining);
        }
        show_records(length, render, output);
    } while (remaining > 0);
    plain_link.fetch(sizeof(plain_link.rx));
}

} // namespace bench
