// plot: draws columns of a CSV.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

Action declare_plot(CLI::App &command);

} // namespace stmctl
