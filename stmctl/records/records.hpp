// The commands of measurement records, converter values and bytes, each in a file of its own.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

Action declare_records(CLI::App &command);
Action declare_follow(CLI::App &command);
Action declare_watch(CLI::App &command);
Action declare_adc(CLI::App &command);
Action declare_raw(CLI::App &command);

} // namespace stmctl
