// The co-processor's part and the transcripts that the tests share.
#include "tests/readout/stream_fixture.hpp"

#include "tests/platform/bitwise_crc.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace
{

constexpr int SILENT = 0;          // no ReadoutMode
constexpr int STANDARD_ERROR = 2;  // in transcripts, for a flag
constexpr size_t HEADER_SIZE = 20; // of which 17 bytes are data, at most
constexpr uint8_t IDLE = 0xC0;     // what an idle line brings, and the bytes after it
const Bytes REQUEST_ECHO = {0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55};

template <size_t SIZE>
void number_bytes(uint8_t (&buffer)[SIZE], uint8_t first)
{
    for (size_t i = 0; i < SIZE; ++i) {
        buffer[i] = static_cast<uint8_t>(first + i);
    }
}

// A header without 0x55, each of its bytes of a value of its own.
Bytes idle_header()
{
    Bytes bytes(HEADER_SIZE);
    for (size_t i = 0; i < HEADER_SIZE; ++i) {
        bytes[i] = static_cast<uint8_t>(IDLE + i);
    }
    return bytes;
}

ssize_t write_to_transcript(void *, const char *text, size_t size)
{
    StreamScript::output(std::string(text, size).c_str(), STANDARD_ERROR);
    return static_cast<ssize_t>(size);
}

constexpr cookie_io_functions_t WRITE_ONLY = {nullptr, write_to_transcript, nullptr, nullptr};

std::string upper_hex(int number)
{
    char text[8];
    snprintf(text, sizeof(text), "%X", static_cast<unsigned>(number));
    return text;
}

} // namespace

const Transcript STREAM_POLL = {"exchange 20: 44*20", "poll"};
const Transcript STREAM_TIMEOUT =
    joined({times(301, STREAM_POLL), {R"(say 0 "SPI timeout\n")", "sleep 500000"}});

void show_no_records(StmPollFn poll, StmOutputFn output)
{
    stm_continuous_readout(SILENT, poll, output);
}

void show_no_omega(StmPollFn poll, StmOutputFn output)
{
    stm_continuous_readout_omega(SILENT, poll, output);
}

void show_no_temp(StmPollFn poll, StmOutputFn output)
{
    stm_continuous_readout_temp(SILENT, poll, output);
}

StreamScript::StreamScript()
    : standard_error(stderr), written_down(fopencookie(nullptr, "w", WRITE_ONLY))
{
    setvbuf(written_down, nullptr, _IONBF, 0);
    stderr = written_down;
    open_link();
    begin_again();
}

StreamScript::~StreamScript()
{
    stderr = standard_error;
    fclose(written_down);
}

void StreamScript::begin_again()
{
    forget();
    scripted = 0;
    scripted_polls = 0;
    memset(stm_link.tx_buffer, STALE_TX, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, STALE_RX, sizeof(stm_link.rx_buffer));
    number_bytes(stm_link.tx_short, 0xB0);
    number_bytes(stm_link.rx_short, 0xD0);
    strcpy(stm_link.message, LAST_REPORT);
    ring = {};
    stm_link.ring = &ring;
    sent_from.clear();
    received_into.clear();
    places.clear();
}

void StreamScript::pass_request()
{
    answer(++scripted, REQUEST_ECHO);
}

void StreamScript::idle(int polls)
{
    for (int i = 0; i < polls; ++i) {
        answer(++scripted, idle_header());
    }
    scripted_polls += polls;
}

void StreamScript::fail_next(int error)
{
    fail_exchange(++scripted, error);
}

void StreamScript::head(size_t index, size_t length, const Bytes &data)
{
    Bytes bytes = idle_header();
    bytes.resize(index);
    bytes = chained({bytes,
                     {0x55, static_cast<uint8_t>(length >> 8), static_cast<uint8_t>(length & 0xFF)},
                     data});
    bytes.resize(HEADER_SIZE);
    answer(++scripted, bytes);
    ++scripted_polls;
}

void StreamScript::complete_length(size_t index, size_t length)
{
    const auto high = static_cast<uint8_t>(length >> 8);
    const auto low = static_cast<uint8_t>(length & 0xFF);
    if (index >= 18) {
        answer(++scripted, index == 19 ? Bytes{high, low} : Bytes{low});
    }
}

void StreamScript::deliver_rest(size_t index, const Bytes &data)
{
    const auto came = static_cast<ptrdiff_t>(std::min(held(index), data.size()));
    answer(++scripted, Bytes(data.begin() + came, data.end()));
}

void StreamScript::send_block(size_t index, const Bytes &data)
{
    send_block(index, data.size(), data);
}

void StreamScript::send_block(size_t index, size_t length, const Bytes &data)
{
    head(index, length, data);
    complete_length(index, length);
    deliver_rest(index, data);
    pass_request();
}

void StreamScript::stop()
{
    type_line(++scripted_polls, "s\n");
    ++scripted;
}

void StreamScript::keep_buffers()
{
    watch = [this](const spi_ioc_transfer &used) {
        sent_from.push_back(bytes_in(stm_link.tx_buffer));
        received_into.push_back(bytes_in(stm_link.rx_buffer));
        const bool is_short = used.tx_buf == reinterpret_cast<uintptr_t>(stm_link.tx_short);
        const auto start = reinterpret_cast<uintptr_t>(stm_link.rx_buffer);
        places.push_back(is_short ? SHORT : static_cast<ptrdiff_t>(used.rx_buf - start));
    };
}

Bytes StreamDialogue::good_records(int count, int first)
{
    Bytes all;
    for (int i = first; i < first + count; ++i) {
        all = chained({all, record(GetParam().kind, {{"nr", i}, {"rel_t", i}, {"I3", -i}})});
    }
    return all;
}

std::string StreamDialogue::request()
{
    return short_exchange(
        {GetParam().command, GetParam().second, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xAA});
}

Transcript StreamDialogue::fetched(size_t index, size_t length)
{
    return joined({STREAM_POLL, completion(index), {rest(length - held(index)), request()}});
}

Transcript StreamDialogue::paused()
{
    return GetParam().pause == 0 ? Transcript()
                                 : Transcript{"sleep " + std::to_string(GetParam().pause)};
}

Transcript StreamDialogue::failure(const char *text, const char *error)
{
    return {text + std::string(error)};
}

Transcript StreamDialogue::sized_failure(const char *text, int length, const char *error)
{
    Transcript lines = failure(text, error);
    if (GetParam().watches) {
        lines.push_back(remark("datasize: " + std::to_string(length) + "\n"));
    }
    return lines;
}

size_t held(size_t index)
{
    return index < 17 ? 17 - index : 0;
}

Transcript completion(size_t index)
{
    if (index < 18) {
        return {};
    }
    return {index == 19 ? "exchange 2: 00 00" : "exchange 1: 00"};
}

std::string rest(size_t length)
{
    return exchange(bytes_of(length, 0x66));
}

std::string remark(const std::string &text)
{
    return say(text, STANDARD_ERROR);
}

std::string wrong_stream_checksum(const std::string &computed, const std::string &stored)
{
    return say("Wrong checksum detected (crc = " + computed + ", checksum= " + stored + ")\n");
}

std::string wrong_stream_checksum(const Bytes &bytes, size_t size)
{
    const auto checksum = static_cast<ptrdiff_t>(size) - 2;
    const int stored = bytes.at(size - 2) | bytes.at(size - 1) << 8;
    return wrong_stream_checksum(
        upper_hex(bitwise_crc(Bytes(bytes.begin(), bytes.begin() + checksum))), upper_hex(stored));
}

void PrintTo(const StreamUser &user, std::ostream *stream)
{
    *stream << user.name;
}

std::string user_name(const testing::TestParamInfo<StreamUser> &info)
{
    return info.param.name;
}
