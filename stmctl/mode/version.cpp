// version: that of the boot loader.
#include "stmctl/mode/mode.hpp"
#include "stmctl/output/output.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

// The co-processor sends the minor number; the major number is always 1.
ExitStatus show_version(const Device &device)
{
    const uint8_t minor = ask_for_byte(VERSION_QUERY, "version");
    if (minor == SILENT_LINE || minor == UNDRIVEN_LINE) {
        fail_without_answer("version", minor, device);
    }
    print(fmt::format("boot loader 1.{} ({})\n", minor, minor));
    return ExitStatus::done;
}

} // namespace

Action declare_version(CLI::App &command)
{
    return declare_on_device(command, show_version);
}

} // namespace stmctl
