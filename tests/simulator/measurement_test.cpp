// Goal: what the virtual co-processor measures looks like a three-phase network, is the same on
// every machine, and stands in each kind of record where a host looks for it.
#include "tests/simulator/readout_wire.hpp"

#include "simulator/measuring/adc_frame.hpp"
#include "simulator/measuring/record.hpp"

#include <array>
#include <cstdlib>

namespace simulator
{

namespace
{

Bytes record(const RecordKind &kind, const Sample &sample, uint8_t buffered = 0)
{
    Bytes bytes(kind.size);
    write_record(bytes, *find_record_format(kind.code), sample, buffered);
    return bytes;
}

Bytes record(const RecordKind &kind, uint32_t seed, uint32_t time)
{
    return record(kind, measure(seed, time));
}

Bytes adc_frame(uint32_t seed)
{
    std::array<uint8_t, ADC_FRAME_SIZE> frame = {};
    write_adc_frame(frame, seed, 1, 200);
    return {frame.begin(), frame.end()};
}

// FNV-1a, which is no checksum of the wire.
uint32_t hashed(const Bytes &bytes)
{
    uint32_t hash = 2166136261U;
    for (const uint8_t byte : bytes) {
        hash = (hash ^ byte) * 16777619U;
    }
    return hash;
}

uint32_t hash_of_1000_records(const RecordKind &kind, uint32_t seed)
{
    Bytes all;
    for (uint32_t time = 1; time <= 1000; ++time) {
        const Bytes one = record(kind, seed, time);
        all.insert(all.end(), one.begin(), one.end());
    }
    return hashed(all);
}

TEST(Measurement, is_the_same_on_every_machine)
{
    EXPECT_EQ(hash_of_1000_records(BASE, 1), 798324826U);
    EXPECT_EQ(hash_of_1000_records(OMEGA, 1), 2479272522U);
    EXPECT_EQ(hash_of_1000_records(TEMPERATURE, 1), 3387426653U);
    EXPECT_EQ(hash_of_1000_records(BASE, 1'000'000'000), 535655747U);
    EXPECT_EQ(hashed(adc_frame(1)), 3971984266U);
}

TEST(Measurement, differs_from_seed_to_seed_and_from_time_to_time)
{
    EXPECT_NE(record(BASE, 1, 7), record(BASE, 2, 7));
    EXPECT_NE(record(BASE, 0, 7), record(BASE, 1, 7));
    EXPECT_NE(measure(1, 1).voltages, measure(1, 46).voltages);
    EXPECT_NE(adc_frame(1), adc_frame(2));
}

TEST(Measurement, numbers_samples_from_1_to_255_and_never_0)
{
    for (const auto &[time, number] :
         {std::pair(1U, 1), {2U, 2}, {255U, 255}, {256U, 1}, {510U, 255}}) {
        EXPECT_EQ(measure(1, time).number, number) << time;
        EXPECT_EQ(measure(1, time).time, time);
    }
}

TEST(Measurement, shows_three_phases_a_third_of_a_period_apart)
{
    for (uint32_t time = 46; time < 500; ++time) {
        const Sample sample = measure(1, time);
        const Sample third_before = measure(1, time - 15);
        for (const size_t phase : {1U, 2U}) {
            EXPECT_NEAR(sample.voltages[phase + 1], third_before.voltages[phase], 800);
            EXPECT_NEAR(sample.currents[phase + 1], third_before.currents[phase], 80);
        }
        EXPECT_NEAR(sample.voltages[1], measure(1, time - 45).voltages[1], 800);
        EXPECT_LE(std::abs(sample.voltages[0]), 150);
        EXPECT_EQ(sample.currents[0],
                  -(sample.currents[1] + sample.currents[2] + sample.currents[3]));
    }
}

TEST(Measurement, reaches_the_peaks_of_the_network_and_no_more)
{
    std::array<int32_t, 4> highest_voltage = {};
    std::array<int32_t, 4> highest_current = {};
    for (uint32_t time = 1; time <= 500; ++time) {
        const Sample sample = measure(1, time);
        for (size_t i = 0; i < 4; ++i) {
            highest_voltage[i] = std::max(highest_voltage[i], sample.voltages[i]);
            highest_current[i] = std::max(highest_current[i], sample.currents[i]);
        }
    }
    for (size_t phase = 1; phase <= 3; ++phase) {
        EXPECT_NEAR(highest_voltage[phase], 325'000, 400);
        EXPECT_NEAR(highest_current[phase], 14'142, 60);
    }
}

TEST(Measurement, shows_currents_that_lag_behind_their_voltages)
{
    EXPECT_NEAR(measure(1, 1).voltages[1], 0, 400);
    EXPECT_NEAR(measure(1, 5).currents[1], 0, 40);
    EXPECT_LT(measure(1, 1).currents[1], -7000);
    EXPECT_GT(measure(1, 12).voltages[1], 320'000);
}

TEST(Measurement, lets_temperature_and_rotation_drift_in_single_steps)
{
    for (uint32_t time = 2; time < 100'000; ++time) {
        const Sample before = measure(1, time - 1);
        const Sample sample = measure(1, time);
        EXPECT_LE(std::abs(sample.temperature - before.temperature), 1) << time;
        EXPECT_LE(std::abs(sample.rotation_time - before.rotation_time), 1) << time;
    }
    EXPECT_EQ(measure(1, 1).temperature, 2350);
    EXPECT_EQ(measure(1, 64 * 300).temperature, 2650);
    EXPECT_EQ(measure(1, 64 * 600).temperature, 2350);
    EXPECT_EQ(measure(1, 1).rotation_time, 20'000);
    EXPECT_EQ(measure(1, 16 * 250).rotation_time, 19'750);
}

TEST(Measurement, counts_beyond_the_range_of_signed_numbers)
{
    EXPECT_EQ(measure(1, 1).external_counter, 0x7FFFFF39U);
    EXPECT_EQ(measure(1, 199).external_counter, 0x7FFFFFFFU);
    EXPECT_EQ(measure(1, 200).external_counter, 0x80000000U);
    EXPECT_EQ(measure(1, 511).state, 127);
    EXPECT_EQ(measure(1, 512).state, -128);
}

// What all kinds of records have at the same place.
void expect_common_fields(const Bytes &record, const Sample &sample)
{
    EXPECT_EQ(record[0], 0x55);
    EXPECT_EQ(record[1], sample.number);
    EXPECT_EQ(number_at(record, 4, 4), sample.time);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(signed_at(record, 8 + 4 * i), sample.voltages[i]);
        EXPECT_EQ(signed_at(record, 24 + 4 * i), sample.currents[i]);
    }
}

TEST(Measurement, of_a_base_record_has_wide_inputs_and_an_unused_word)
{
    const Sample sample = measure(1, 700);
    const Bytes bytes = record(BASE, sample, 3);
    ASSERT_EQ(bytes.size(), 56U);
    expect_common_fields(bytes, sample);
    EXPECT_EQ(number_at(bytes, 2, 2), 0U);
    EXPECT_EQ(signed_at(bytes, 40), 70);
    EXPECT_EQ(signed_at(bytes, 44), 1);
    EXPECT_EQ(bytes[48], 700 / 4);
    EXPECT_EQ(number_at(bytes, 49, 4), sample.external_counter);
    EXPECT_EQ(bytes[53], 3);
    EXPECT_TRUE(is_intact(bytes));
}

TEST(Measurement, of_an_omega_record_has_a_rotation_time)
{
    const Sample sample = measure(1, 9999);
    const Bytes bytes = record(OMEGA, sample, 255);
    ASSERT_EQ(bytes.size(), 52U);
    expect_common_fields(bytes, sample);
    EXPECT_EQ(number_at(bytes, 2, 2), sample.rotation_time);
    EXPECT_EQ(number_at(bytes, 40, 2), 999U);
    EXPECT_EQ(number_at(bytes, 42, 2), 1U << (9999 / 45 % 15));
    EXPECT_EQ(bytes[44], 9999 / 4 % 256);
    EXPECT_EQ(number_at(bytes, 45, 4), sample.external_counter);
    EXPECT_EQ(bytes[49], 255);
    EXPECT_TRUE(is_intact(bytes));
}

TEST(Measurement, of_a_temperature_record_has_no_external_counter)
{
    const Sample sample = measure(1, 123'456);
    const Bytes bytes = record(TEMPERATURE, sample, 1);
    ASSERT_EQ(bytes.size(), 48U);
    expect_common_fields(bytes, sample);
    EXPECT_EQ(number_at(bytes, 2, 2), sample.temperature);
    EXPECT_EQ(number_at(bytes, 40, 2), 345U);
    EXPECT_EQ(number_at(bytes, 42, 2), 1U << (123'456 / 45 % 15));
    EXPECT_EQ(bytes[44], 123'456 / 4 % 256);
    EXPECT_EQ(bytes[45], 1);
    EXPECT_TRUE(is_intact(bytes));
}

} // namespace

} // namespace simulator
