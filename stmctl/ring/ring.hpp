// The subcommands of "ring", each in a file of its own.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

std::span<const Command> ring_commands();

Action declare_ring_write(CLI::App &command);
Action declare_ring_read(CLI::App &command);
Action declare_ring_status(CLI::App &command);
Action declare_ring_remove(CLI::App &command);

} // namespace stmctl
