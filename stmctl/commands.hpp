// The table of commands, above all that it calls.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

std::span<const Command> commands();

} // namespace stmctl
