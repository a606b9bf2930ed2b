// What the tests of the download share.
#include "tests/download/download_fixture.hpp"

#include "link/stm_com_funcs.h"
#include "tests/platform/bitwise_crc.hpp"

#include <algorithm>
#include <cstdlib>

const Transcript WAIT = {"sleep 10000", "exchange 1: 33", "poll", "sleep 1000"};
const Transcript STOPPED_WAIT = {"sleep 10000", "exchange 1: 33", "poll"};

namespace
{

Bytes little_endian(uint32_t value, size_t count)
{
    Bytes bytes;
    for (size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<uint8_t>(value & 0xFF));
        value >>= 8;
    }
    return bytes;
}

std::string four_digits(unsigned value)
{
    char text[sizeof("0x0000")];
    snprintf(text, sizeof(text), "0x%04X", value & 0xFFFF);
    return text;
}

std::string size_and_checksum(unsigned size, unsigned checksum)
{
    return " (size: " + four_digits(size) + ", checksum: " + four_digits(checksum) + ")\n";
}

} // namespace

Download::Download()
{
    open_link();
    answer_always({0x55});
}

Download::~Download()
{
    for (FILE *file : files) {
        fclose(file);
    }
}

FILE *Download::file_with(const Bytes &image)
{
    FILE *file = keep(tmpfile());
    for (const uint8_t byte : image) {
        fputc(byte, file);
    }
    rewind(file);
    return file;
}

FILE *Download::keep(FILE *stream)
{
    if (stream == nullptr) {
        perror("a stream for a test");
        abort();
    }
    files.push_back(stream);
    return stream;
}

void Download::load(FILE *file, uint32_t address)
{
    stm_download_image(file, address, poll, output);
}

void Download::load(const Bytes &image, uint32_t address)
{
    load(file_with(image), address);
}

Bytes image_of(size_t size)
{
    Bytes image(size);
    uint32_t state = 5676;
    for (uint8_t &byte : image) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return image;
}

Bytes part_of(const Bytes &bytes, size_t begin, size_t end)
{
    const auto at = [&bytes](size_t offset) {
        return bytes.data() + std::min(offset, bytes.size());
    };
    return Bytes(at(begin), at(end));
}

Bytes frame(uint32_t address, uint32_t size, const Bytes &data, const Bytes &tail)
{
    Bytes covered = chained({little_endian(address, 4), little_endian(size, 4), data});
    if (covered.size() < 1022) {
        covered.resize(1022, 0x00);
    }
    const size_t reached = covered.size() - 1022;
    covered.insert(covered.end(), tail.begin() + static_cast<long>(reached), tail.end());
    return chained({little_endian(bitwise_crc(covered), 2), covered});
}

unsigned checksum_of(const Bytes &frame_bytes)
{
    return frame_bytes[0] + 256U * frame_bytes[1];
}

std::string say_header(unsigned size, unsigned checksum)
{
    return say("Transmitting information header" + size_and_checksum(size, checksum));
}

std::string say_block(int number, unsigned size, unsigned checksum)
{
    return say("Transmitting datablock " + std::to_string(number) +
               size_and_checksum(size, checksum));
}

std::string say_checksum_sent(unsigned checksum)
{
    char text[sizeof("FFFF")];
    snprintf(text, sizeof(text), "%X", checksum & 0xFFFF);
    return say(std::string("Checksum sent: ") + text + "\n");
}

Transcript blocks(uint32_t address, const Bytes &image, const Bytes &tail_before)
{
    Transcript all;
    Bytes tail = tail_before;
    for (size_t begin = 0; begin < image.size(); begin += 1024) {
        const Bytes data = part_of(image, begin, begin + 1024);
        const auto size = static_cast<uint32_t>(data.size());
        const Bytes sent = frame(address, size, data, tail);
        all = joined(
            {all,
             {exchange(sent), say_block(static_cast<int>(begin / 1024), size, checksum_of(sent))},
             WAIT});
        tail = part_of(sent, 1024, 1034);
    }
    return all;
}
