// The commands of the co-processor's memory, each in a file of its own.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

Action declare_peek(CLI::App &command);
Action declare_poke(CLI::App &command);
Action declare_dump(CLI::App &command);
Action declare_text(CLI::App &command);

} // namespace stmctl
