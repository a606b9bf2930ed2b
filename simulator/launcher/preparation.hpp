// What must be in place before a command can run on a virtual board.
#pragma once

#include "simulator/launcher/options.hpp"

#include <string>
#include <vector>

namespace simulator
{

// The library to load into the command: the given one, or the one installed with this program.
std::string find_preload(const LaunchOptions &options);

// Empty, or why the library cannot be loaded into the command.
std::string check_preload(const LaunchOptions &options, const std::string &preload);

// Creates the board, or takes it as it is, and sets the mode and version of the options. Empty, or
// why the board cannot be used.
std::string prepare_board(const LaunchOptions &options);

// Creates a new transcript for this command, or lets it go on with that of the programs that use the
// board already; programs only append to it. Empty, or why it cannot.
std::string prepare_transcript(const RunOptions &run);

// The command's words as they are run, with a null at the end; also sets the environment in which
// they find their library. The words point into the options.
std::vector<char *> prepare_command(LaunchOptions &options, const std::string &preload);

} // namespace simulator
