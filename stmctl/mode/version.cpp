// version: shows the version of the boot loader.
#include "stmctl/mode/mode.hpp"
#include "stmctl/output/json.hpp"
#include "stmctl/output/output.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

ExitStatus show_version(const Device &device, bool as_json)
{
    const uint8_t minor = ask_for_byte(VERSION_QUERY, "version");
    if (minor == SILENT_LINE || minor == UNDRIVEN_LINE) {
        fail_without_answer("version", minor, device);
    }
    JsonObject object;
    object.add("version", version_words(minor));
    object.add("number", int64_t{minor});
    print(as_json ? object.json() + '\n'
                  : fmt::format("boot loader {} ({})\n", version_words(minor), minor));
    return ExitStatus::done;
}

} // namespace

Action declare_version(CLI::App &command)
{
    return declare_query(command, show_version);
}

} // namespace stmctl
