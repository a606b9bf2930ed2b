// completion: a script for a shell, generated from the command line itself.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

Action declare_completion(CLI::App &command);

} // namespace stmctl
