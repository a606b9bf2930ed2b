// The frame in which the values of the analogue-to-digital converter are delivered.
#pragma once

#include <cstdint>
#include <vector>

namespace simulator
{

inline constexpr uint32_t ADC_VALUES = 300; // places in a frame, used or not

// A frame of the values from start on, which says that the first count of them are valid.
std::vector<uint8_t> write_adc_frame(uint32_t seed, uint32_t start, uint8_t count);

} // namespace simulator
