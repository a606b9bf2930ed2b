// The application's commands as a table.
#include "simulator/commands/command_table.hpp"

#include "simulator/words/text.hpp"

#include <algorithm>
#include <iterator>

namespace simulator
{

namespace
{

// The answer of a command that was accepted; 0 means that it was not.
constexpr char TAKEN[] = "1";

constexpr Command number(uint8_t code, int width, int channels, uint8_t shows,
                         const char *default_answer = "0")
{
    return {code, CommandKind::number, channels, width, 0, shows, default_answer};
}

constexpr Command words(uint8_t code, const char *default_answer)
{
    return {code, CommandKind::text, 0, 0, 0, 0, default_answer};
}

constexpr Command setting(uint8_t code, int channels, int width, int values = 1)
{
    return {code, CommandKind::setting, channels, width, values, 0, TAKEN};
}

constexpr Command plain(uint8_t code, CommandKind kind = CommandKind::plain)
{
    return {code, kind, 0, 0, 0, 0, TAKEN};
}

constexpr Command readout(uint8_t code, CommandKind kind, int width = 0)
{
    return {code, kind, 0, width, 0, 0, nullptr};
}

// clang-format off
constexpr Command COMMANDS[] = {
    readout(0x01, CommandKind::raw_bytes), readout(0x02, CommandKind::records, 48),
    number(0x03, 2, 0, 0x51), number(0x04, 1, 0, 0x52), number(0x05, 1, 0, 0x53),
    number(0x06, 4, 8, 0x54), number(0x07, 4, 8, 0x55),
    number(0x08, 2, 2, 0x56), number(0x09, 2, 2, 0x57), number(0x0A, 2, 2, 0x58),
    number(0x0B, 2, 2, 0x59), number(0x0C, 2, 2, 0x5A), number(0x0D, 2, 2, 0x5B),
    words(0x21, "virtual co-processor"), words(0x22, "firmware 1.0"),
    plain('2'), plain('3'),
    setting(0x51, 0, 2), setting(0x52, 0, 2), setting(0x53, 0, 1),
    setting(0x54, 8, 2), setting(0x55, 8, 2),
    setting(0x56, 2, 2), setting(0x57, 2, 2), setting(0x58, 2, 2),
    setting(0x59, 2, 2), setting(0x5A, 2, 2), setting(0x5B, 2, 2),
    plain('a', CommandKind::write_byte),
    {'b', CommandKind::read_byte, 0, 0, 0, 0, nullptr},
    plain('c'), plain('d'), plain('q'), plain('r'),
    number('s', 1, 0, 0, "1"),
    {'u', CommandKind::read_range, 0, 0, 0, 0, nullptr},
    number(0x95, 2, 2, 0x97), number(0x96, 2, 2, 0x98), setting(0x97, 2, 2), setting(0x98, 2, 2),
    number(0x99, 4, 8, 0x9B), number(0x9A, 4, 8, 0x9C), setting(0x9B, 8, 4), setting(0x9C, 2, 4),
    number(0xA0, 4, 0, 0, "123456"),
    readout(0xC1, CommandKind::records, 52),
    setting(0xC2, 8, 2), setting(0xC3, 8, 2, 2),
    readout(0xC4, CommandKind::adc_values),
    setting(0xC5, 2, 2), setting(0xC6, 2, 2, 2),
    number(0xC7, 1, 0, 0, "3"),
    readout(0xC8, CommandKind::records, 56),
};
// clang-format on

constexpr size_t setting_slots()
{
    size_t slots = 0;
    for (const Command &command : COMMANDS) {
        const int places = command.channels == 0 ? 1 : command.channels;
        slots += command.kind == CommandKind::setting ? static_cast<size_t>(places) : 0;
    }
    return slots;
}
static_assert(setting_slots() == SETTING_SLOTS);

std::string describe(const Command &command)
{
    const char *many = command.values > 1 ? "s" : "";
    switch (command.kind) {
    case CommandKind::number:
        return text("answers a number of %d bits", command.width * 8);
    case CommandKind::text:
        return "answers a text";
    case CommandKind::setting:
        return text("takes %d number%s of %d bits", command.values, many, command.width * 8);
    case CommandKind::plain:
        return "takes nothing";
    case CommandKind::write_byte:
        return "writes a byte of the memory";
    case CommandKind::read_byte:
        return "reads a byte of the memory";
    case CommandKind::read_range:
        return "reads a range of the memory";
    case CommandKind::adc_values:
        return "reads converter values";
    case CommandKind::raw_bytes:
        return "reads raw bytes";
    case CommandKind::records:
        return text("reads records of %d bytes", command.width);
    }
    return {};
}

std::string describe_answer(const Command &command)
{
    if (command.shows != 0) {
        return text("what 0x%02X has set", command.shows);
    }
    return command.default_answer != nullptr ? command.default_answer : "";
}

} // namespace

const Command *find_command(uint8_t code)
{
    const auto *found = std::ranges::find(COMMANDS, code, &Command::code);
    return found == std::end(COMMANDS) ? nullptr : found;
}

std::span<const Command> commands()
{
    return COMMANDS;
}

int places_of(const Command &command)
{
    return command.kind == CommandKind::read_byte ? ADDRESSES : command.channels;
}

std::string describe_commands()
{
    std::string lines = "  code  channels  what it does                 answer unless given\n";
    for (const Command &command : COMMANDS) {
        const std::string channels =
            command.channels > 0 ? text("0 to %d", command.channels - 1) : "";
        lines += text("  0x%02X  %-8s  %-27s  %s\n", command.code, channels.c_str(),
                      describe(command).c_str(), describe_answer(command).c_str());
    }
    return lines;
}

} // namespace simulator
