// What the co-processor measures.
#include "simulator/measuring/measurement.hpp"

namespace simulator
{

namespace
{

constexpr int32_t SINE_UNIT = 10'000;

constexpr int16_t SINE[SAMPLES_PER_PERIOD] = {
    0,     1392,  2756,  4067,  5299,  6428,  7431,  8290,  8988,  9511,  9848,  9994,
    9945,  9703,  9272,  8660,  7880,  6947,  5878,  4695,  3420,  2079,  698,   -698,
    -2079, -3420, -4695, -5878, -6947, -7880, -8660, -9272, -9703, -9945, -9994, -9848,
    -9511, -8988, -8290, -7431, -6428, -5299, -4067, -2756, -1392};

constexpr uint32_t PHASE_SHIFT = SAMPLES_PER_PERIOD / 3;
constexpr uint32_t LOAD_SHIFT = 4; // inductive load: currents lag by 32 degrees

constexpr int32_t VOLTAGE_PEAK = 325'000;
constexpr int32_t VOLTAGE_NOISE = 400;
constexpr int32_t NEUTRAL_NOISE = 150;
constexpr int32_t CURRENT_PEAK = 14'142;
constexpr int32_t CURRENT_NOISE = 40;
constexpr int32_t CONVERTER_PEAK = 6'000'000; // of 24 bits
constexpr int32_t CONVERTER_NOISE = 2'000;

// Its highest bit is set two hundred samples after power on.
constexpr uint32_t EXTERNAL_COUNTER_START = 0x7FFFFF38;

// Each channel has its own noise.
enum Channel : uint32_t { VOLTAGES, CURRENTS = VOLTAGES + 4, CONVERTER = CURRENTS + 4 };

uint32_t scrambled(uint32_t bits)
{
    for (int round = 0; round < 3; ++round) {
        bits ^= bits >> 15;
        bits *= 0x2545F491;
        bits ^= bits >> 13;
    }
    return bits;
}

// From -most to most.
int32_t noise(uint32_t seed, uint32_t time, uint32_t channel, int32_t most)
{
    const uint32_t bits = scrambled(scrambled(scrambled(seed + 1) ^ time) + channel);
    return static_cast<int32_t>(bits % static_cast<uint32_t>(2 * most + 1)) - most;
}

int32_t wave(int32_t peak, uint32_t time, uint32_t shift)
{
    const uint32_t at = (time % SAMPLES_PER_PERIOD + 2 * SAMPLES_PER_PERIOD - 1 - shift);
    return static_cast<int32_t>(int64_t{peak} * SINE[at % SAMPLES_PER_PERIOD] / SINE_UNIT);
}

// Rises from 0 to height and falls again, by one step every samples_per_step samples.
uint16_t drift(uint32_t time, uint32_t samples_per_step, uint32_t height)
{
    const uint32_t step = time / samples_per_step % (2 * height);
    return static_cast<uint16_t>(step < height ? step : 2 * height - step);
}

void measure_network(Sample &sample, uint32_t seed)
{
    const uint32_t time = sample.time;
    sample.voltages[0] = noise(seed, time, VOLTAGES, NEUTRAL_NOISE);
    sample.currents[0] = 0;
    for (uint32_t phase = 1; phase <= 3; ++phase) {
        const uint32_t shift = (phase - 1) * PHASE_SHIFT;
        sample.voltages[phase] =
            wave(VOLTAGE_PEAK, time, shift) + noise(seed, time, VOLTAGES + phase, VOLTAGE_NOISE);
        sample.currents[phase] = wave(CURRENT_PEAK, time, shift + LOAD_SHIFT) +
                                 noise(seed, time, CURRENTS + phase, CURRENT_NOISE);
        sample.currents[0] -= sample.currents[phase];
    }
}

} // namespace

Sample measure(uint32_t seed, uint32_t time)
{
    Sample sample = {};
    sample.time = time;
    sample.number = static_cast<uint8_t>((time - 1) % 0xFF + 1);
    measure_network(sample, seed);
    sample.counter = static_cast<int32_t>(time / 10 % 1000);
    sample.inputs = 1 << (time / SAMPLES_PER_PERIOD % 15);
    sample.state = static_cast<int8_t>(time / 4);
    sample.external_counter = EXTERNAL_COUNTER_START + time;
    sample.rotation_time = static_cast<uint16_t>(20'000 - drift(time, 16, 250));
    sample.temperature = static_cast<uint16_t>(2'350 + drift(time, 64, 300));
    return sample;
}

int32_t convert(uint32_t seed, uint32_t time)
{
    return wave(CONVERTER_PEAK, time, 0) + noise(seed, time, CONVERTER, CONVERTER_NOISE);
}

} // namespace simulator
