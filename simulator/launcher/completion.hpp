// Completions of virtual-board for a shell, made from its options and faults. After the options
// comes the completion of the command that it runs.
#pragma once

#include <string>
#include <vector>

namespace simulator
{

struct OptionWords {
    std::string name;
    std::string argument; // as in the help; empty for an option without one
};

// Empty for an unknown shell.
std::string completion_script(const std::string &shell, const std::vector<OptionWords> &options);

} // namespace simulator
