// What the tests of the ADC sample read-out share: the co-processor's part of it, and the parts of
// which its transcripts are made.
#pragma once

#include "link/stm_com_funcs.h"
#include "tests/platform/dialogue.hpp"

// The fixture: an opened link that has been used before. Buffers and message hold what nobody is to
// take for something new; what comes in with the request looks like readiness.
class AdcReadout : public Dialogue
{
  protected:
    static constexpr int NOTHING_SHOWN = 0; // no ReadoutMode

    AdcReadout();
    ~AdcReadout() override;

    // The script: ready in the first poll, or in another one; then this length and this frame.
    void ready_with(const Bytes &frame);
    void announce(uint16_t length, const Bytes &frame);
    void ready_in_poll(int number, uint16_t length, const Bytes &frame);

    // The same without any readiness in time, or with one in the last poll.
    void late_with(uint16_t length, const Bytes &frame, uint8_t last_status = 0x00);

    static void read(int mode) { stm_read_adc_samples(mode, poll, output); }
};

// A frame whose samples behind the given ones are zero, with its true checksum or another one.
Bytes adc_frame(uint8_t count, const std::vector<int32_t> &samples);
Bytes adc_frame(uint8_t count, const std::vector<int32_t> &samples, uint16_t checksum);

// Parts of a transcript: up to the poll of this number and its input; then length and frame, each
// fetched; the time-out; the synchronisation.
Transcript requested(int polls);
Transcript fetched(size_t length);
Transcript timed_out();
Transcript synchronised();
