// The table of commands: one row each.
#pragma once

#include "stmctl/process/exit_status.hpp"

#include <functional>
#include <span>

namespace CLI
{
class App;
}

// What a command does, once its words are parsed. It may throw a Failure.
using Action = std::function<ExitStatus()>;

struct Command {
    const char *name;
    const char *summary;
    const char *examples;                 // lines below the help, two blanks in front of each
    Action (*declare)(CLI::App &command); // declares options and operands
    std::span<const Command> (*nested)() = nullptr; // in place of that: commands behind this one
};

std::span<const Command> commands();
std::span<const Command> ring_commands();

// Each stands in a file of its own or of its family.
Action declare_flash(CLI::App &command);
Action declare_state(CLI::App &command);
Action declare_version(CLI::App &command);
Action declare_start(CLI::App &command);
Action declare_reset(CLI::App &command);
Action declare_get(CLI::App &command);
Action declare_set(CLI::App &command);
Action declare_list(CLI::App &command);
Action declare_peek(CLI::App &command);
Action declare_poke(CLI::App &command);
Action declare_dump(CLI::App &command);
Action declare_text(CLI::App &command);
Action declare_records(CLI::App &command);
Action declare_follow(CLI::App &command);
Action declare_adc(CLI::App &command);
Action declare_raw(CLI::App &command);
Action declare_watch(CLI::App &command);
Action declare_plot(CLI::App &command);
Action declare_completion(CLI::App &command);
