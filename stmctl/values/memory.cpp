// peek, poke, dump and text: the co-processor's memory by address.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/command.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/output.hpp"
#include "stmctl/process/printable.hpp"
#include "stmctl/values/hexdump.hpp"

#include <fmt/format.h>

#include <memory>

namespace
{

constexpr uint32_t LAST_ADDRESS = 0xFFFF;
constexpr uint32_t MOST_DUMPED = 4096; // what one reply holds

struct MemoryOptions {
    std::string address;
    std::vector<std::string> values;
    std::string count;
    std::string written;
    bool four = false;
    DeviceOptions device;
};
using Options = std::shared_ptr<MemoryOptions>;

uint16_t parse_address(const MemoryOptions &options)
{
    return static_cast<uint16_t>(parse_number(options.address, "address", 0, LAST_ADDRESS));
}

ExitStatus peek(const MemoryOptions &options)
{
    const uint16_t address = parse_address(options);
    const Device device(options.device);
    uint32_t value = 0;
    check(perform([&](StmPollFn poll, StmOutputFn output) {
              if (options.four) {
                  value = stm_read_u32_be(address, poll, output);
                  return 0;
              }
              const int32_t byte = stm_read_byte(address, poll, output);
              value = static_cast<uint32_t>(byte);
              return byte;
          }),
          "peek");
    print(fmt::format("{} (0x{:0{}X})\n", value, value, options.four ? 8 : 2));
    return ExitStatus::done;
}

ExitStatus poke(const MemoryOptions &options)
{
    uint32_t address = parse_address(options);
    std::vector<uint8_t> bytes;
    for (const std::string &value : options.values) {
        bytes.push_back(static_cast<uint8_t>(parse_number(value, "value", 0, 0xFF)));
    }
    if (address + bytes.size() > LAST_ADDRESS + 1) {
        throw Failure(ExitStatus::usage, "the values reach beyond address 0xFFFF");
    }
    const Device device(options.device);
    for (const uint8_t byte : bytes) {
        const Outcome outcome = perform([&](StmPollFn poll, StmOutputFn output) {
            return stm_write_byte(static_cast<uint16_t>(address), byte, poll, output);
        });
        check(outcome, fmt::format("poke 0x{:04X}", address));
        print(fmt::format("0x{:04X} = {} (answer {})\n", address, byte, outcome.result));
        ++address;
    }
    return ExitStatus::done;
}

ExitStatus dump(const MemoryOptions &options)
{
    const uint16_t address = parse_address(options);
    const auto count = static_cast<uint16_t>(parse_number(options.count, "count", 1, MOST_DUMPED));
    const Device device(options.device);
    std::vector<uint8_t> bytes;
    const Outcome outcome =
        perform([&](StmPollFn poll,
                    StmOutputFn output) { return stm_dump_bytes(address, count, poll, output); },
                [&](const char *text, int) { // "0xAB;", or a report
                    if (std::string_view(text).starts_with("0x")) {
                        bytes.push_back(static_cast<uint8_t>(strtoul(text, nullptr, 16)));
                    }
                });
    check(outcome, "dump");
    // Behind the reply the module shows what earlier exchanges have left.
    const auto came = static_cast<size_t>(outcome.result);
    bytes.resize(std::min(bytes.size(), came));
    print(hexdump(address, bytes));
    if (came < count) {
        throw Failure(ExitStatus::failed,
                      fmt::format("dump: {} bytes asked for, {} came", count, came));
    }
    return ExitStatus::done;
}

void read_text(uint16_t address)
{
    std::string text;
    const Outcome outcome =
        perform([&](StmPollFn poll,
                    StmOutputFn output) { return stm_print_text_at(address, poll, output); },
                [&](const char *piece, int more) { text += more != 0 ? piece : ""; });
    check(outcome, "text");
    print(printable_line(text));
}

void write_text(uint16_t address, const std::string &text)
{
    check(perform([&](StmPollFn poll, StmOutputFn output) {
              stm_write_string(address, text.c_str(), poll, output);
              return 0;
          }),
          "text");
    print(fmt::format("{} characters written to 0x{:04X}\n", text.size(), address));
}

ExitStatus text(const MemoryOptions &options)
{
    constexpr size_t LONGEST = 255; // the module sends a longer one without end
    const uint16_t address = parse_address(options);
    if (options.written.size() > LONGEST) {
        throw Failure(ExitStatus::usage, fmt::format("the text has {} characters, {} are possible",
                                                     options.written.size(), LONGEST));
    }
    const Device device(options.device);
    if (options.written.empty()) {
        read_text(address);
    } else {
        write_text(address, options.written);
    }
    return ExitStatus::done;
}

Options declare_address(CLI::App &command)
{
    auto options = std::make_shared<MemoryOptions>();
    add_operand(command, "ADDRESS", Presence::required, options->address, "0 to 0xFFFF");
    add_device_options(command, options->device);
    return options;
}

} // namespace

Action declare_peek(CLI::App &command)
{
    const Options options = declare_address(command);
    add_flag(command, "--long", options->four, "four bytes as one number, the highest first");
    return [options] { return peek(*options); };
}

Action declare_poke(CLI::App &command)
{
    const Options options = declare_address(command);
    add_operands(command, "VALUE", Presence::required, options->values,
                 "0 to 255, each for the address behind the last");
    return [options] { return poke(*options); };
}

Action declare_dump(CLI::App &command)
{
    const Options options = declare_address(command);
    add_operand(command, "COUNT", Presence::required, options->count, "bytes, 1 to 4096");
    return [options] { return dump(*options); };
}

Action declare_text(CLI::App &command)
{
    const Options options = declare_address(command);
    add_option(command, "--write", "TEXT", options->written,
               "write these characters, one after another to the same address");
    return [options] { return text(*options); };
}
