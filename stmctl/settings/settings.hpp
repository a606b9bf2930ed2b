// The commands of settings and queries, each in a file of its own.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

Action declare_get(CLI::App &command);
Action declare_set(CLI::App &command);
Action declare_list(CLI::App &command);
Action declare_save(CLI::App &command);
Action declare_restore(CLI::App &command);

} // namespace stmctl
