// What the co-processor measures: a three-phase network under load, always the same for one seed.
// Everything is computed in integers, so that a seed gives the same numbers on every machine.
#pragma once

#include <array>
#include <cstdint>

namespace simulator
{

// Samples of one period of the network.
inline constexpr uint32_t SAMPLES_PER_PERIOD = 45;

// Everything in one sample; each kind of record holds a part of it.
struct Sample {
    uint32_t time;                   // in samples since power on; the first is 1
    uint8_t number;                  // 1 to 255, then 1 again
    std::array<int32_t, 4> voltages; // to earth: the neutral's, then the phases'
    std::array<int32_t, 4> currents; // the negative sum of the phases', then the phases'
    int32_t counter;                 // of binary inputs
    int32_t inputs;                  // one bit each
    int8_t state;
    uint32_t external_counter;
    uint16_t rotation_time;
    uint16_t temperature;
};

Sample measure(uint32_t seed, uint32_t time);

// One value of the analogue-to-digital converter for the first phase.
int32_t convert(uint32_t seed, uint32_t time);

} // namespace simulator
