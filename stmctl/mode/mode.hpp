// The mode that the co-processor runs in: asked for, named and changed.
#pragma once

#include "stmctl/command_line/command.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/diagnosis.hpp"

#include <cstdint>
#include <functional>
#include <string>

namespace stmctl
{

inline constexpr uint8_t VERSION_QUERY = 0x91;

// "boot loader"
const char *mode_name(uint8_t mode);

// The byte that answers a query. Throws a Failure that begins with the name.
uint8_t ask_for_byte(uint8_t query, const std::string &name);

// For an answer that nobody gives.
[[noreturn]] void fail_without_answer(const char *name, uint8_t answer, const Device &device);

// Sends a command that has no answer: only the mode tells whether it was understood.
ExitStatus change_mode(int (*send)(), const char *name, uint8_t wanted);

// Declares a command that takes no more than a device.
Action declare_on_device(CLI::App &command,
                         const std::function<ExitStatus(const Device &device)> &work);

Action declare_state(CLI::App &command);
Action declare_version(CLI::App &command);
Action declare_start(CLI::App &command);
Action declare_reset(CLI::App &command);

} // namespace stmctl
