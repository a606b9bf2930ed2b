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
    const char *examples;                 // lines below the help, each indented by two blanks
    Action (*declare)(CLI::App &command); // declares options and operands
    std::span<const Command> (*nested)() = nullptr; // instead of that: commands after this one
    bool needs_all = false;                         // of what the other commands declare
};

} // namespace stmctl
