// A three-phase network as the co-processor measures it: steady amplitudes, some noise, the phases
// a third of a turn apart, 45 samples a period.
#include "bench/counted_data.hpp"

namespace
{

constexpr int32_t VOLTAGE_PEAK = 325'000;
constexpr int32_t CURRENT_PEAK = 14'142;

// Sine and cosine of a phase that advances by eight degrees.
struct Phase {
    double sine;
    double cosine;

    constexpr void go_on()
    {
        constexpr double STEP_SINE = 0.13917310096006544;
        constexpr double STEP_COSINE = 0.99026806874157036;
        *this = {sine * STEP_COSINE + cosine * STEP_SINE, cosine * STEP_COSINE - sine * STEP_SINE};
    }

    // A third of a turn later.
    constexpr Phase follower() const
    {
        constexpr double THIRD_SINE = 0.86602540378443865;
        return {-sine / 2 - cosine * THIRD_SINE, -cosine / 2 + sine * THIRD_SINE};
    }
};

// The same sequence on every machine.
struct Noise {
    uint32_t state;

    constexpr uint32_t next() { return state = state * 1'664'525 + 1'013'904'223; }

    // From -most to most.
    constexpr int32_t within(int32_t most)
    {
        return static_cast<int32_t>((next() >> 8) % static_cast<uint32_t>(2 * most + 1)) - most;
    }
};

struct Network {
    Phase first = {0, 1};
    Noise noise = {1};

    // Voltages of the neutral and the phases, then currents in the same order.
    constexpr std::array<int32_t, 8> measure()
    {
        std::array<int32_t, 8> readings = {noise.within(150)};
        Phase phase = first;
        for (size_t i = 1; i <= 3; ++i, phase = phase.follower()) {
            const double lagging = 0.848 * phase.sine - 0.530 * phase.cosine;
            readings[i] = static_cast<int32_t>(VOLTAGE_PEAK * phase.sine) + noise.within(400);
            readings[4 + i] = static_cast<int32_t>(CURRENT_PEAK * lagging) + noise.within(40);
            readings[4] -= readings[4 + i];
        }
        first.go_on();
        return readings;
    }
};

constexpr auto CHECKSUM_STEPS = [] {
    std::array<uint16_t, 256> steps = {};
    for (uint32_t i = 0; i < steps.size(); ++i) {
        uint32_t remainder = i << 8;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = remainder << 1 ^ ((remainder & 0x8000) != 0 ? 0x11021U : 0U);
        }
        steps[i] = static_cast<uint16_t>(remainder);
    }
    return steps;
}();

constexpr void put(uint8_t *to, uint32_t value, size_t width)
{
    for (size_t i = 0; i < width; ++i) {
        to[i] = static_cast<uint8_t>(value >> 8 * i);
    }
}

constexpr void write_record(uint8_t *record, uint32_t time, Network &network)
{
    record[0] = 0x55;
    record[1] = static_cast<uint8_t>((time - 1) % 255 + 1);
    put(record + 2, 2'350 + time / 64, 2);
    put(record + 4, time, 4);
    size_t at = 8;
    for (const int32_t reading : network.measure()) {
        put(record + at, static_cast<uint32_t>(reading), 4);
        at += 4;
    }
    put(record + 40, time / 10 % 1000, 2);
    put(record + 42, 1U << (time / 45 % 15), 2);
    record[44] = static_cast<uint8_t>(time / 4);
    record[45] = static_cast<uint8_t>(time % 90);
    uint32_t checksum = 0xFFFF;
    for (size_t i = 0; i < RECORD_BYTES - 2; ++i) {
        checksum = CHECKSUM_STEPS[record[i] ^ checksum >> 8] ^ (checksum << 8 & 0xFFFF);
    }
    put(record + 46, ~checksum, 2);
}

constexpr std::array<Block, BLOCKS> make_blocks()
{
    std::array<Block, BLOCKS> blocks = {};
    Network network;
    uint32_t time = 100'000; // well into a run
    for (Block &block : blocks) {
        for (size_t i = 0; i < BLOCK_RECORDS; ++i) {
            write_record(block.data() + RECORD_BYTES * i, ++time, network);
        }
    }
    return blocks;
}

// Numbers of ten digits are as frequent as those of one.
constexpr int32_t number_of_any_length(Noise &noise)
{
    constexpr uint32_t BOUNDS[] = {
        10,        100,        1'000,       10'000,        100'000,
        1'000'000, 10'000'000, 100'000'000, 1'000'000'000, 2'147'483'648};
    const uint32_t bound = BOUNDS[(noise.next() >> 8) % 10];
    const auto magnitude = static_cast<int32_t>((noise.next() ^ noise.next() >> 16) % bound);
    return noise.next() >> 31 == 0 ? magnitude : -magnitude;
}

constexpr std::array<int32_t, NUMBERS> make_numbers()
{
    std::array<int32_t, NUMBERS> numbers = {};
    Network network;
    size_t at = 0;
    while (at < NUMBERS / 2) {
        for (const int32_t reading : network.measure()) {
            numbers[at++] = reading;
        }
    }
    Noise noise = {2};
    while (at < NUMBERS) {
        numbers[at++] = number_of_any_length(noise);
    }
    return numbers;
}

} // namespace

constexpr std::array<Block, BLOCKS> counted_blocks = make_blocks();
constexpr std::array<int32_t, NUMBERS> counted_numbers = make_numbers();
