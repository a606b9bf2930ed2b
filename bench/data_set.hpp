// The data that the contenders work on: too much for a branch predictor to learn, and the same in
// each run.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace bench
{

constexpr int32_t NUMBER_COUNT = 65'536;
constexpr int32_t RECORD_SIZE = 48;
constexpr int32_t BLOCK_RECORDS = 85; // the most in a request
constexpr int32_t BLOCK_SIZE = BLOCK_RECORDS * RECORD_SIZE;
constexpr int32_t BLOCK_COUNT = 96;
constexpr int32_t RECORD_COUNT = BLOCK_COUNT * BLOCK_RECORDS;

struct DataSet {
    const char *name;
    std::vector<int32_t> numbers;
    std::vector<uint8_t> records; // with a temperature, complete with checksums, block after block

    const uint8_t *record(int32_t index) const
    {
        return records.data() + static_cast<size_t>(index) * RECORD_SIZE;
    }
};

// "three_phase": voltages of +-325000 and currents of +-10000, three phases with some noise.
// "mixed": numbers of 1 digit up to the most of their type, equally often, of both signs.
std::span<const DataSet> data_sets();

} // namespace bench
