// A command, as a row of a table.
#pragma once

#include "stmctl/process/exit_status.hpp"

#include <functional>
#include <span>

namespace CLI
{
class App;
}

namespace stmctl
{

// What a command does, once its words are parsed. It may throw a Failure.
using Action = std::function<ExitStatus()>;

struct Command {
    const char *name;
    const char *summary;
    const char *examples;                 // lines below the help, two blanks in front of each
    Action (*declare)(CLI::App &command); // declares options and operands
    std::span<const Command> (*nested)() = nullptr; // in place of that: commands behind this one
    bool needs_all = false;                         // of what is declared behind the others
};

} // namespace stmctl
