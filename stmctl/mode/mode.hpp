// The commands that show or change the mode in which the co-processor runs.
#pragma once

#include "stmctl/command_line/command.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/diagnosis.hpp"
#include "stmctl/module/mode_change.hpp"

#include <cstdint>
#include <functional>
#include <string>

namespace stmctl
{

inline constexpr uint8_t VERSION_QUERY = 0x91;

// For an answer that no co-processor gives.
[[noreturn]] void fail_without_answer(const char *name, uint8_t answer, const Device &device);

// "1.5": the co-processor sends the minor number, the major number is always 1.
std::string version_words(uint8_t minor);

// Declares a command that takes nothing but a device.
Action declare_on_device(CLI::App &command,
                         const std::function<ExitStatus(const Device &device)> &work);

// The same for one that shows an answer, as JSON on request.
Action declare_query(CLI::App &command,
                     const std::function<ExitStatus(const Device &device, bool as_json)> &show);

Action declare_state(CLI::App &command);
Action declare_version(CLI::App &command);
Action declare_start(CLI::App &command);
Action declare_reset(CLI::App &command);

} // namespace stmctl
