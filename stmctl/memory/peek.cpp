// peek: reads one or four bytes of the co-processor's memory.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/memory/address.hpp"
#include "stmctl/memory/memory.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/output.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

struct Options : AddressOptions {
    bool four = false;
};

ExitStatus peek(const Options &options)
{
    const uint16_t address = options.parsed();
    const Device device(options.device);
    uint32_t value = 0;
    device.check(perform([&](StmPollFn poll, StmOutputFn output) {
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

} // namespace

Action declare_peek(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_address(command, *options);
    add_flag(command, "--long", options->four, "read four bytes as one big-endian number");
    return [options] { return peek(*options); };
}

} // namespace stmctl
