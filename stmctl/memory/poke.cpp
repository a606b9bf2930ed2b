// poke: writes bytes to the co-processor's memory.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/memory/address.hpp"
#include "stmctl/memory/memory.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

struct Options : AddressOptions {
    std::vector<std::string> values;
};

ExitStatus poke(const Options &options)
{
    uint32_t address = options.parsed();
    std::vector<uint8_t> bytes;
    for (const std::string &value : options.values) {
        bytes.push_back(static_cast<uint8_t>(parse_number(value, "value", 0, 0xFF)));
    }
    if (address + bytes.size() > LAST_ADDRESS + 1) {
        throw Failure(ExitStatus::usage, "the values extend beyond address 0xFFFF");
    }
    const Device device(options.device);
    for (const uint8_t byte : bytes) {
        const Outcome outcome = perform([&](StmPollFn poll, StmOutputFn output) {
            return stm_write_byte(static_cast<uint16_t>(address), byte, poll, output);
        });
        device.check(outcome, fmt::format("poke 0x{:04X}", address));
        print(fmt::format("0x{:04X} = {} (answer {})\n", address, byte, outcome.result));
        ++address;
    }
    return ExitStatus::done;
}

} // namespace

Action declare_poke(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_address(command, *options);
    add_operands(command, "VALUE", Presence::required, options->values,
                 "0 to 255, for consecutive addresses");
    return [options] { return poke(*options); };
}

} // namespace stmctl
