// The data for the counted work, made by the compiler: a program that is only started must not
// spend instructions on it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

constexpr size_t RECORD_BYTES = 48;
constexpr size_t BLOCK_RECORDS = 85;
constexpr size_t BLOCK_BYTES = RECORD_BYTES * BLOCK_RECORDS;
constexpr size_t BLOCKS = 4; // different ones
constexpr size_t NUMBERS = 4096;

using Block = std::array<uint8_t, BLOCK_BYTES>;

// NOLINTBEGIN(bugprone-dynamic-static-initializers): only declared here
extern const std::array<Block, BLOCKS> counted_blocks;     // records of a three-phase network
extern const std::array<int32_t, NUMBERS> counted_numbers; // half its readings, half of any length
// NOLINTEND(bugprone-dynamic-static-initializers)
