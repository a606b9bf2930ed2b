// Runs the command of virtual-board.
#pragma once

#include "simulator/launcher/options.hpp"

#include <string>

namespace simulator
{

// Exit statuses beside the command's own, as other tools that run commands have them.
inline constexpr int OWN_FAILURE = 125;
inline constexpr int CANNOT_RUN = 126;
inline constexpr int NO_SUCH_COMMAND = 127;
inline constexpr int KILLED_BY_SIGNAL = 128; // plus the number of the signal

// Says on standard error why virtual-board fails. Returns OWN_FAILURE.
int complain(const std::string &reason);

// With a board that lasts longer than the command, the command takes this process's place and the
// function does not return. With a fresh board the command is waited for, and its status returned.
int launch(LaunchOptions &options);

} // namespace simulator
