// The table of commands, made into a command line.
#pragma once

#include "stmctl/process/exit_status.hpp"

// Parses the words, runs their command, and says why if it fails.
ExitStatus run_command_line(int argc, char **argv);
