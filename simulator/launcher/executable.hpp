// Examines the command before it is run.
#pragma once

#include <string>

namespace simulator
{

// A library can be loaded only into dynamically linked programs of its own architecture; any other
// program would use a real device, bypassing the virtual board. Returns why the command is such a
// program, or nothing; also nothing if it is not a program at all, which shows when it is run.
std::string why_not_loadable(const std::string &command, const std::string &library);

} // namespace simulator
