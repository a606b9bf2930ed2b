// The co-processor's part and the transcripts that the tests share.
#include "tests/readout/adc_fixture.hpp"

#include "link/link.hpp"
#include "tests/platform/bitwise_crc.hpp"

#include <cstring>

using namespace stm;

namespace
{

constexpr uint8_t LAST_REQUEST[13] = {0xE0, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06,
                                      0xE7, 0xE8, 0xE9, 0xEA, 0xEB, 0xEC};

Bytes frame_body(uint8_t count, std::vector<int32_t> samples)
{
    samples.resize(300);
    Bytes body = {count};
    for (const int32_t sample : samples) {
        for (int shift = 0; shift < 32; shift += 8) {
            body.push_back(static_cast<uint8_t>(static_cast<uint32_t>(sample) >> shift));
        }
    }
    return body;
}

Bytes two_bytes(uint16_t word)
{
    return {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8)};
}

} // namespace

AdcReadout::AdcReadout()
{
    open_link();
    memset(stm_link.tx_buffer, 0x5A, sizeof(stm_link.tx_buffer));
    memset(stm_link.rx_buffer, 0x55, sizeof(stm_link.rx_buffer));
    memcpy(stm_link.tx_short, LAST_REQUEST, sizeof(LAST_REQUEST));
    strcpy(stm_link.message, "the last report");
    answer(1, bytes_of(8, 0x55));
}

AdcReadout::~AdcReadout()
{
    EXPECT_EQ(messages, texts) << "every text goes through the message buffer";
}

void AdcReadout::ready_with(const Bytes &frame)
{
    announce(static_cast<uint16_t>(frame.size()), frame);
}

void AdcReadout::announce(uint16_t length, const Bytes &frame)
{
    ready_in_poll(1, length, frame);
}

void AdcReadout::ready_in_poll(int number, uint16_t length, const Bytes &frame)
{
    answer(number + 1, {0x55});
    answer(number + 2, two_bytes(length));
    answer(number + 3, frame);
}

void AdcReadout::late_with(uint16_t length, const Bytes &frame, uint8_t last_status)
{
    ready_in_poll(301, length, frame);
    answer(302, {last_status});
}

Bytes adc_frame(uint8_t count, const std::vector<int32_t> &samples)
{
    return adc_frame(count, samples, bitwise_crc(frame_body(count, samples)));
}

Bytes adc_frame(uint8_t count, const std::vector<int32_t> &samples, uint16_t checksum)
{
    return chained({frame_body(count, samples), two_bytes(checksum)});
}

Transcript requested(int polls)
{
    return joined({
        {"short exchange 8: C4 01 02 03 04 05 06 AA"},
        times(polls, {"exchange 1: 44", "poll"}),
    });
}

Transcript fetched(size_t length)
{
    return {"exchange 2: 00 00", exchange(bytes_of(length, 0x66))};
}

Transcript timed_out()
{
    return {R"(say 0 "SPI timeout\n")", "sleep 500000"};
}

Transcript synchronised()
{
    return {"exchange 4096: 66*4096"};
}
