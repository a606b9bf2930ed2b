// The frame in which the values of the analogue-to-digital converter are delivered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator
{

inline constexpr uint32_t ADC_VALUES = 300;                      // places in a frame, used or not
inline constexpr size_t ADC_FRAME_SIZE = 1 + 4 * ADC_VALUES + 2; // their number, checksum

// A frame of the values from start on, which says that the first count of them are valid.
void write_adc_frame(std::span<uint8_t, ADC_FRAME_SIZE> frame, uint32_t seed, uint32_t start,
                     uint8_t count);

} // namespace simulator
