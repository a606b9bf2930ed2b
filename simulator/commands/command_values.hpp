// Values by command: what each setting last received, and the answers that a board was given.
//
//     0x53 = 2                       a setting or a query without channels
//     0xC3/7 = 1234 567              channel 7 of a setting with two values
//     0x21 = virtual co-processor    a query whose answer is a text
//     0xC2 = 77                      as an answer: the result of a setting
//     0x62/0x1F00 = ok               as an answer: what successive reads of an address give
#pragma once

#include "simulator/commands/command_table.hpp"

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator
{

inline constexpr int NO_PLACE = -1;

struct CommandKey {
    uint8_t code;
    int place; // a channel, an address, or NO_PLACE

    auto operator<=>(const CommandKey &) const = default;
};

using CommandValues = std::map<CommandKey, std::string>;

// At most so many addresses can have answers: a board remembers how much of each has been read.
inline constexpr size_t MOST_ADDRESS_ANSWERS = 256;

enum class ValuesOf { settings, answers };

// Adds the value in one line. Empty, or what is wrong with the line.
std::string add_value(CommandValues &values, ValuesOf kind, std::string_view line);

// Adds all lines of a file, except empty ones and those that start with #.
std::string read_values(CommandValues &values, ValuesOf kind, const std::string &lines);
std::string write_values(const CommandValues &values);

// The numbers in a value that add_value has accepted.
std::vector<int64_t> numbers_of(const std::string &value);

} // namespace simulator
