// The mode in which the co-processor runs.
#include "stmctl/mode/mode.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

std::string version_words(uint8_t minor)
{
    return fmt::format("1.{}", minor);
}

void fail_without_answer(const char *name, uint8_t answer, const Device &device)
{
    throw Failure(ExitStatus::failed, fmt::format("{} unknown: the answer is {}, {}", name, answer,
                                                  odd_mode_words(answer, device)));
}

Action declare_query(CLI::App &command,
                     const std::function<ExitStatus(const Device &device, bool as_json)> &show)
{
    auto as_json = std::make_shared<bool>(false);
    add_flag(command, "--json", *as_json, "as JSON: an object");
    return declare_on_device(
        command, [as_json, show](const Device &device) { return show(device, *as_json); });
}

Action declare_on_device(CLI::App &command,
                         const std::function<ExitStatus(const Device &device)> &work)
{
    auto options = std::make_shared<DeviceOptions>();
    add_device_options(command, *options);
    return [options, work] {
        const Device device(*options);
        return work(device);
    };
}

} // namespace stmctl
