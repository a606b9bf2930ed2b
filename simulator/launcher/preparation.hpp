// What must be in place before a command can run on a virtual board.
#pragma once

#include "simulator/launcher/options.hpp"

#include <string>
#include <vector>

namespace simulator
{

// The library to load into the command: the given one, or the one beside this program.
std::string find_preload(const LaunchOptions &options);

// Empty, or why the library cannot be loaded into the command.
std::string check_preload(const LaunchOptions &options, const std::string &preload);

// Makes the board, or takes it as it is, and gives it the mode and version of the options. Empty,
// or why the board cannot be used.
std::string prepare_board(const LaunchOptions &options);

// A new transcript for this command; programs only add to it. Empty, or why there is none.
std::string prepare_transcript(const std::string &path);

// The command's words as they are run, ended by a null, and the environment in which they find
// their library. The words point into the options.
std::vector<char *> prepare_command(LaunchOptions &options, const std::string &preload);

} // namespace simulator
