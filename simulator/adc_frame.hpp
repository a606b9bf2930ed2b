// The frame in which the values of the analogue-digital converter are handed over.
#pragma once

#include <cstdint>
#include <vector>

namespace simulator
{

inline constexpr uint32_t ADC_VALUES = 300; // places of a frame, used or not

// A frame of the values from start on, of which the first so many are said to be good.
std::vector<uint8_t> write_adc_frame(uint32_t seed, uint32_t start, uint8_t count);

} // namespace simulator
