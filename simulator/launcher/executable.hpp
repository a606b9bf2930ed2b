// Looks at the command before it is run.
#pragma once

#include <string>

namespace simulator
{

// A library can be loaded into dynamically linked programs of its own architecture only; all others
// would talk to a real device behind the virtual board's back. Returns why the command is one of
// those, or nothing; also nothing if it is no program at all, which shows when it is run.
std::string why_not_loadable(const std::string &command, const std::string &library);

} // namespace simulator
