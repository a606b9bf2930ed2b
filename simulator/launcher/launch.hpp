// Runs the command of virtual-board.
#pragma once

#include "simulator/launcher/options.hpp"

#include <string>

namespace simulator
{

// Exit statuses in addition to the command's own, as usual for tools that run commands.
inline constexpr int OWN_FAILURE = 125;
inline constexpr int CANNOT_RUN = 126;
inline constexpr int NO_SUCH_COMMAND = 127;
inline constexpr int KILLED_BY_SIGNAL = 128; // plus the number of the signal

// Reports on standard error why virtual-board fails. Returns OWN_FAILURE.
int complain(const std::string &reason);

// With a board that outlives the command, the command replaces this process and the function does
// not return. With a new board it waits for the command and returns its status.
int launch(LaunchOptions &options);

} // namespace simulator
