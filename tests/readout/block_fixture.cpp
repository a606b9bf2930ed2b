// The co-processor's part and the transcripts that the tests share.
#include "tests/readout/block_fixture.hpp"

#include <algorithm>
#include <cstring>

namespace
{

const Bytes REQUEST_ECHO = {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55};

template <size_t SIZE>
void number_bytes(uint8_t (&buffer)[SIZE], uint8_t first)
{
    for (size_t i = 0; i < SIZE; ++i) {
        buffer[i] = static_cast<uint8_t>(first + i);
    }
}

} // namespace

const Transcript POLL = {"exchange 1: 44", "poll"};
const Transcript LENGTH = {"exchange 2: 00 00"};
const Transcript CLOSING = {"exchange 4096: 66*4096"};
const Transcript TIMEOUT = joined({times(301, POLL), {R"(say 0 "SPI timeout\n")", "sleep 500000"}});

BlockDialogue::BlockDialogue()
{
    open_link();
    begin_again();
}

void BlockDialogue::begin_again()
{
    forget();
    scripted = 0;
    memset(stm_link.tx_buffer, STALE_TX, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, STALE_RX, sizeof(stm_link.rx_buffer));
    number_bytes(stm_link.tx_short, 0xB0);
    number_bytes(stm_link.rx_short, 0xD0);
    strcpy(stm_link.message, LAST_REPORT);
}

void BlockDialogue::pass_request()
{
    answer(++scripted, REQUEST_ECHO);
}

void BlockDialogue::busy(int polls)
{
    for (int i = 0; i < polls; ++i) {
        answer(++scripted, {0x44});
    }
}

void BlockDialogue::ready()
{
    answer(++scripted, {0x55});
}

void BlockDialogue::announce(size_t length)
{
    answer(++scripted, {static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length & 0xFF)});
}

void BlockDialogue::deliver(const Bytes &block)
{
    answer(++scripted, block);
}

void BlockDialogue::fail_next(int error)
{
    fail_exchange(++scripted, error);
}

void BlockDialogue::ready_with(const Bytes &block)
{
    ready_with(block.size(), block);
}

void BlockDialogue::ready_with(size_t length, const Bytes &block)
{
    ready();
    announce(length);
    deliver(block);
}

Transcript BlockDialogue::serve(const Bytes &requests)
{
    Transcript expected;
    for (const uint8_t count : requests) {
        const bool is_plain = count > 0 && count <= GetParam().most;
        const Bytes bytes = records(GetParam().kind, is_plain ? count : 1);
        pass_request();
        ready_with(bytes);
        expected = joined({expected, {request(count)}, block(bytes.size())});
    }
    return expected;
}

void BlockDialogue::read(int count, int mode)
{
    GetParam().read(count, mode, poll, output);
}

std::string BlockDialogue::request(uint8_t count)
{
    return short_exchange({GetParam().command, count, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xAA});
}

const GoldenRecord &BlockDialogue::golden(size_t index)
{
    return golden_records(GetParam().kind).at(index);
}

Transcript data(size_t length)
{
    return {exchange(bytes_of(length, 0x66))};
}

Transcript block(size_t length)
{
    return joined({POLL, LENGTH, data(length)});
}

std::string wrong_checksum(int at)
{
    return say("Wrong checksum detected (iCurrentBlockIndex = " + std::to_string(at) + ")\n");
}

void PrintTo(const Operation &operation, std::ostream *stream)
{
    *stream << operation.name;
}

std::string operation_name(const testing::TestParamInfo<Operation> &info)
{
    return info.param.name;
}
