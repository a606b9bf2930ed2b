// The table of commands, the layer above all of them.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

std::span<const Command> commands();

} // namespace stmctl
