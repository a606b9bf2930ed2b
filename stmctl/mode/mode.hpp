// The commands that ask for the mode that the co-processor runs in, or change it.
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

// For an answer that nobody gives.
[[noreturn]] void fail_without_answer(const char *name, uint8_t answer, const Device &device);

// Declares a command that takes no more than a device.
Action declare_on_device(CLI::App &command,
                         const std::function<ExitStatus(const Device &device)> &work);

Action declare_state(CLI::App &command);
Action declare_version(CLI::App &command);
Action declare_start(CLI::App &command);
Action declare_reset(CLI::App &command);

} // namespace stmctl
