// Both ends of the ring for the tests of its read-out.
#include "tests/ringbuffer/reader_fixture.hpp"

#include "ringbuffer/ring_record.hpp"
#include "tests/platform/bitwise_crc.hpp"

#include <cstring>

using namespace stm;

namespace
{

uint8_t low_byte(int number)
{
    return static_cast<uint8_t>(number & 0xFF);
}

std::string checksum_of(const Bytes &record)
{
    return std::to_string(record[46] + record[47] * 256);
}

} // namespace

const std::string HEADER =
    say("\"nr\";\"temp\";\"rel_t\";\"U1e\";\"U2e\";\"U3e\";\"Uen\";\"I1\";\"I2\";\"I3\";\"negIe\";"
        "\"BE1\";\"BE2\";\"BE\";\"buffered\";\"checksum\";\n",
        1);
const std::string TIMEOUT = say("Timeout while reading ring buffer (buffer empty?)\n");

std::function<void()> RingReadout::after_output;

RingReadout::RingReadout()
{
    stm_link.ring = reinterpret_cast<RingBuffer *>(segment.data());
    strcpy(stm_link.message, "the last report");
    after_output = nullptr;
    while_asleep = [this] {
        const auto happening = happenings.find(++sleeps);
        if (happening != happenings.end()) {
            happening->second();
        }
    };
}

void RingReadout::in_sleep(int number, std::function<void()> happening)
{
    happenings[number] = std::move(happening);
}

void RingReadout::put(const Bytes &wire)
{
    const RingRecord record = ring_record_from_wire(wire.data());
    EXPECT_EQ(RingBuffer_PutValue(1, &record), 1);
}

void RingReadout::put_good(int first, int last)
{
    for (int number = first; number <= last; ++number) {
        put(good_record(number));
    }
}

int32_t RingReadout::value(Field field) const
{
    return field_of(segment.data(), field);
}

void RingReadout::set(const Setting &setting)
{
    set_field(segment.data(), setting);
}

void RingReadout::read(int format)
{
    stm_ringbuffer_readout(format, poll, output);
}

int RingReadout::output_and_then(const char *text, int more)
{
    const int result = output(text, more);
    after_output();
    return result;
}

Transcript idle(int polls)
{
    return times(polls, {"sleep 1000"});
}

Bytes with_checksum(Bytes bytes)
{
    const uint16_t checksum = bitwise_crc(bytes);
    bytes.push_back(static_cast<uint8_t>(checksum & 0xFF));
    bytes.push_back(static_cast<uint8_t>(checksum >> 8));
    return bytes;
}

// temp 300, U1e and its kin 7, I1 and its kin -5, BE1 -2, BE2 3, BE 200, buffered 9.
Bytes good_record(int number)
{
    const uint8_t nr = low_byte(number);
    const uint8_t high = low_byte(number >> 8);
    return with_checksum(chained({{0x55, nr, 0x2C, 0x01, nr, high, 0x00, 0x00},
                                  {7, 0, 0, 0, 7, 0, 0, 0, 7, 0, 0, 0, 7, 0, 0, 0},
                                  {0xFB, 0xFF, 0xFF, 0xFF, 0xFB, 0xFF, 0xFF, 0xFF},
                                  {0xFB, 0xFF, 0xFF, 0xFF, 0xFB, 0xFF, 0xFF, 0xFF},
                                  {0xFE, 0xFF, 3, 0, 200, 9}}));
}

std::string text_line(int number)
{
    return say("stm_uint8_t  nr   : " + std::to_string(number % 256) +
                   "\n"
                   "stm_uint16_t omega_t: 300\n"
                   "stm_int32_t  rel_t: " +
                   std::to_string(number) +
                   "\n\n"
                   "stm_int32_t  U1e  : 7\n"
                   "stm_int32_t  U2e  : 7\n"
                   "stm_int32_t  U3e  : 7\n"
                   "stm_int32_t  Uen  : 7\n\n"
                   "stm_int32_t  I1   : -5\n"
                   "stm_int32_t  I2   : -5\n"
                   "stm_int32_t  I3   : -5\n"
                   "stm_int32_t  -Ie  : -5\n\n"
                   "stm_int16_t  BE1  : -2\n"
                   "stm_int16_t  BE2  : 3\n"
                   "stm_int8_t   BE   : 200\n"
                   "stm_uint8    buffered  : 9\n"
                   "stm_int8_t   checksum  : " +
                   checksum_of(good_record(number)) + "\n\n",
               1);
}

std::string csv_line(int number)
{
    return say(std::to_string(number % 256) + ";300;" + std::to_string(number) +
                   ";7;7;7;7;-5;-5;-5;-5;-2;3;200;9;" + checksum_of(good_record(number)) + ";\n",
               1);
}

Transcript text_lines(int first, int last)
{
    Transcript lines;
    for (int number = first; number <= last; ++number) {
        lines.push_back(text_line(number));
    }
    return lines;
}

Transcript csv_lines(int first, int last)
{
    Transcript lines;
    for (int number = first; number <= last; ++number) {
        lines.push_back(csv_line(number));
    }
    return lines;
}
