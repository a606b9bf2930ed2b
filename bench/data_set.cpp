// The data sets, from a random generator with a fixed seed.
#include "bench/data_set.hpp"

#include "bench/wire_record.hpp"
#include "bench/yardstick/byte_table.hpp"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace bench
{

namespace
{

// One every millisecond, from a network at not quite 50 Hz, so that the samples never repeat.
constexpr double SAMPLES_A_PERIOD = 20.0137;
constexpr double VOLTAGE = 325'000;
constexpr double CURRENT = 10'000;

using Random = std::mt19937;

int32_t uniform(Random &random, int32_t lowest, int32_t highest)
{
    return std::uniform_int_distribution<int32_t>(lowest, highest)(random);
}

// A value of one of three phases, with one per cent of noise.
int32_t phase_value(Random &random, double amplitude, int32_t sample, int phase)
{
    const double turn = sample / SAMPLES_A_PERIOD + phase / 3.0;
    const double noise = uniform(random, -1000, 1000) / 100'000.0;
    return static_cast<int32_t>(amplitude * (std::sin(2 * std::numbers::pi * turn) + noise));
}

// All numbers of digits that the type can have are equally likely.
template <typename Number>
Number mixed(Random &random)
{
    constexpr auto HIGHEST = std::numeric_limits<Number>::max();
    const int32_t digits = uniform(random, 1, std::numeric_limits<Number>::digits10 + 1);
    const auto lowest = static_cast<int32_t>(std::pow(10, digits - 1));
    const auto behind = std::pow(10, digits) - 1;
    const int32_t highest = behind < HIGHEST ? static_cast<int32_t>(behind) : HIGHEST;
    const int32_t value = uniform(random, digits == 1 ? 0 : lowest, highest);
    const bool negative = std::is_signed_v<Number> && uniform(random, 0, 1) == 1;
    return static_cast<Number>(negative ? -value : value);
}

WireRecord three_phase_record(Random &random, int32_t sample)
{
    const auto voltage = [&](int phase) { return phase_value(random, VOLTAGE, sample, phase); };
    const auto current = [&](int phase) { return phase_value(random, CURRENT, sample, phase); };
    WireRecord record = {};
    record.temp = static_cast<uint16_t>(uniform(random, 2400, 2500));
    record.rel_t = static_cast<uint32_t>(1'000'000 + sample);
    record.U1e = voltage(0);
    record.U2e = voltage(1);
    record.U3e = voltage(2);
    record.Uen = uniform(random, -2000, 2000);
    record.I1 = current(0);
    record.I2 = current(1);
    record.I3 = current(2);
    record.negIe = uniform(random, -200, 200);
    record.BE1 = static_cast<int16_t>(uniform(random, 1000, 1100));
    record.BE2 = static_cast<int16_t>(uniform(random, -1100, -1000));
    record.BE = static_cast<int8_t>(uniform(random, 0, 3));
    record.buffered = static_cast<uint8_t>(uniform(random, 80, 90));
    return record;
}

WireRecord mixed_record(Random &random, int32_t)
{
    WireRecord record = {};
    record.temp = mixed<uint16_t>(random);
    record.rel_t = static_cast<uint32_t>(mixed<int32_t>(random));
    for (int32_t *field : {&record.Uen, &record.U1e, &record.U2e, &record.U3e, &record.negIe,
                           &record.I1, &record.I2, &record.I3}) {
        *field = mixed<int32_t>(random);
    }
    record.BE1 = mixed<int16_t>(random);
    record.BE2 = mixed<int16_t>(random);
    record.BE = mixed<int8_t>(random);
    record.buffered = mixed<uint8_t>(random);
    return record;
}

// Adds marker, number and checksum to a record that is otherwise complete.
void append(std::vector<uint8_t> &bytes, WireRecord record, int32_t sample)
{
    record.marker = 0x55;
    record.nr = static_cast<uint8_t>(1 + sample % 255);
    std::array<uint8_t, sizeof(record)> wire;
    memcpy(wire.data(), &record, sizeof(record));
    record.checksum = byte_table_crc(wire.data(), CHECKED_BYTES);
    memcpy(wire.data(), &record, sizeof(record));
    bytes.insert(bytes.end(), wire.begin(), wire.end());
}

DataSet three_phase_set()
{
    DataSet set = {"three_phase", {}, {}};
    Random random(1);
    for (int32_t i = 0; i < NUMBER_COUNT; ++i) {
        set.numbers.push_back(
            phase_value(random, i % 2 == 0 ? VOLTAGE : CURRENT, i / 6, i / 2 % 3));
    }
    for (int32_t i = 0; i < RECORD_COUNT; ++i) {
        append(set.records, three_phase_record(random, i), i);
    }
    return set;
}

DataSet mixed_set()
{
    DataSet set = {"mixed", {}, {}};
    Random random(2);
    for (int32_t i = 0; i < NUMBER_COUNT; ++i) {
        set.numbers.push_back(mixed<int32_t>(random));
    }
    for (int32_t i = 0; i < RECORD_COUNT; ++i) {
        append(set.records, mixed_record(random, i), i);
    }
    return set;
}

} // namespace

std::span<const DataSet> data_sets()
{
    static const std::array<DataSet, 2> SETS = {three_phase_set(), mixed_set()};
    return SETS;
}

} // namespace bench
