// The commands that the application understands, with their parameters and answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace simulator
{

enum class CommandKind {
    number,     // a query: channel; the reply is a signed number of width bytes
    text,       // a query: the reply is a text
    setting,    // channel and values of width bytes; the answer is a result
    plain,      // no parameters; the answer is a result
    write_byte, // address and byte; the answer is a result
    read_byte,  // address; the reply is a byte
    read_range, // address and count; the reply is that many bytes
    adc_values, // the reply is a frame of values
    raw_bytes,  // the reply comes without its length
    records,    // count; the reply is a block of records of width bytes
};

struct Command {
    uint8_t code;
    CommandKind kind;
    int channels;               // 0 for a command without channels
    int width;                  // bytes of a number, of each value of a setting, or of a record
    int values;                 // of a setting
    uint8_t shows;              // query: the setting whose value is its answer, or 0
    const char *default_answer; // unless another one is given; null if it has none
};

const Command *find_command(uint8_t code);

// All of them.
std::span<const Command> commands();

// How many channels all settings have together; one without channels counts as one.
inline constexpr size_t SETTING_SLOTS = 65;

// The number of a command's channels, or of addresses if it takes an address.
inline constexpr int ADDRESSES = 0x10000;
int places_of(const Command &command);

// The commands, one per line.
std::string describe_commands();

} // namespace simulator
