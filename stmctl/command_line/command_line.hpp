// Builds a command line from a table of commands.
#pragma once

#include "stmctl/command_line/command.hpp"

#include <span>

namespace stmctl
{

// Help that does not belong to a single command: "--help NAME".
struct HelpTopic {
    const char *name;
    const char *text;
};

// An option that users look for but that cannot exist.
struct MissingOption {
    const char *name; // "--device", also with "=VALUE"
    const char *sentence;
};

struct Program {
    const char *name;
    const char *summary;
    const char *version;
    std::span<const Command> commands;
    std::span<const HelpTopic> topics;
    const char *footer; // of the general help
    std::span<const MissingOption> missing_options = {};
};

// Parses the words, runs their command, and reports why if it fails.
ExitStatus run_command_line(const Program &program, int argc, char **argv);

} // namespace stmctl
