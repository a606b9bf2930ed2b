// state: shows what the co-processor is running.
#include "stmctl/mode/mode.hpp"
#include "stmctl/output/json.hpp"
#include "stmctl/output/output.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

ExitStatus show_state(const Device &device, bool as_json)
{
    const uint8_t mode = ask_for_byte(MODE_QUERY, "state");
    if (mode != BOOT_LOADER && mode != APPLICATION) {
        fail_without_answer("state", mode, device);
    }
    JsonObject object;
    object.add("state", mode_name(mode));
    object.add("number", int64_t{mode});
    print(as_json ? object.json() + '\n' : fmt::format("{} ({})\n", mode_name(mode), mode));
    return ExitStatus::done;
}

} // namespace

Action declare_state(CLI::App &command)
{
    return declare_query(command, show_state);
}

} // namespace stmctl
