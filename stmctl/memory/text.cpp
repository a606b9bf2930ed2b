// text: reads or writes a text, byte by byte at one address.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/memory/address.hpp"
#include "stmctl/memory/memory.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/counted.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/printable.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

struct Options : AddressOptions {
    std::string written;
};

void read_text(const Device &device, uint16_t address)
{
    std::string text;
    const Outcome outcome =
        perform([&](StmPollFn poll,
                    StmOutputFn output) { return stm_print_text_at(address, poll, output); },
                [&](const char *piece, int more) { text += more != 0 ? piece : ""; });
    device.check(outcome, "text");
    print(printable_line(text));
}

void write_text(const Device &device, uint16_t address, const std::string &text)
{
    device.check(perform([&](StmPollFn poll, StmOutputFn output) {
                     stm_write_string(address, text.c_str(), poll, output);
                     return 0;
                 }),
                 "text");
    print(fmt::format("{} written to 0x{:04X}\n", counted(text.size(), "character", "characters"),
                      address));
}

ExitStatus text(const Options &options)
{
    constexpr size_t LONGEST = 255; // the module would never stop sending a longer one
    const uint16_t address = options.parsed();
    if (options.written.size() > LONGEST) {
        throw Failure(ExitStatus::usage,
                      fmt::format("the text has {} characters; at most {} are possible",
                                  options.written.size(), LONGEST));
    }
    const Device device(options.device);
    if (options.written.empty()) {
        read_text(device, address);
    } else {
        write_text(device, address, options.written);
    }
    return ExitStatus::done;
}

} // namespace

Action declare_text(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_address(command, *options);
    add_option(command, "--write", "TEXT", options->written,
               "write this text, every byte to this address");
    return [options] { return text(*options); };
}

} // namespace stmctl
