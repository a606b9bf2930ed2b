// The command line of virtual-board.
#pragma once

#include "simulator/run/run_options.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator
{

struct LaunchOptions {
    RunOptions run;
    std::optional<Mode> mode;
    std::optional<uint8_t> version;
    CommandValues answers;
    std::string preload;               // library for the command; empty: the default one
    std::vector<std::string> emulator; // words to put before the command; may be empty
    std::vector<char *> command;
    bool shapes_board = false; // an option was given that a real board cannot obey
    bool help = false;
    bool commands = false;  // the application's, as a list
    std::string completion; // of a shell, as a script
    std::string range;      // of the number that the last option takes
    std::string error;      // empty if the rest is valid
};

LaunchOptions parse_options(int argc, char **argv);

// The options, one per line or more.
std::string describe_options();

} // namespace simulator
