// dump: shows a range of the co-processor's memory.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/numbers.hpp"
#include "stmctl/memory/address.hpp"
#include "stmctl/memory/hexdump.hpp"
#include "stmctl/memory/memory.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/counted.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

struct Options : AddressOptions {
    std::string count;
};

constexpr uint32_t MOST_DUMPED = 4096; // as many as one reply holds

ExitStatus dump(const Options &options)
{
    const uint16_t address = options.parsed();
    const auto count = static_cast<uint16_t>(parse_number(options.count, "count", 1, MOST_DUMPED));
    if (uint32_t{address} + count > LAST_ADDRESS + 1) {
        throw Failure(ExitStatus::usage, "the range extends beyond address 0xFFFF");
    }
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
    device.check(outcome, "dump");
    // After the reply the module shows what earlier exchanges have left.
    const auto came = static_cast<size_t>(outcome.result);
    bytes.resize(std::min(bytes.size(), came));
    print(hexdump(address, bytes));
    if (came != count) {
        throw Failure(ExitStatus::failed, fmt::format("dump: {} requested, {} received; {}",
                                                      counted(count, "byte", "bytes"), came,
                                                      device.other_users().suspicion()));
    }
    return ExitStatus::done;
}

} // namespace

Action declare_dump(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_address(command, *options);
    add_operand(command, "COUNT", Presence::required, options->count, "number of bytes, 1 to 4096");
    return [options] { return dump(*options); };
}

} // namespace stmctl
