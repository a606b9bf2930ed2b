// The command line of virtual-board.
#pragma once

#include "simulator/settings.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simulator
{

struct LaunchOptions {
    Settings settings;
    std::optional<Mode> mode;
    std::optional<uint8_t> version;
    CommandValues answers;
    std::string preload;               // library to load into the command; empty for the own one
    std::vector<std::string> emulator; // words to put before the command; may be empty
    std::vector<char *> command;
    bool shapes_board = false; // an option was given that a real board cannot follow
    bool help = false;
    bool commands = false;  // the application's, as a list
    std::string completion; // of a shell, as a script
    std::string range;      // of the number that the latest option takes
    std::string error;      // empty if the rest is good
};

LaunchOptions parse_options(int argc, char **argv);

std::string help_text();

} // namespace simulator
