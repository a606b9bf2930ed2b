// doctor: checks everything that a board needs.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

Action declare_doctor(CLI::App &command);

} // namespace stmctl
