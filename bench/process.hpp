// Programs, run as processes of their own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench
{

using Command = std::vector<std::string>; // the program, and its arguments

struct Ended {
    int status; // as exit gives it, -1 after any other end
    std::string output;
};

// Runs it and gathers its standard output.
Ended run(const Command &command);

// The seconds from its start to its end, its output thrown away.
double run_time(const Command &command);

// The seconds that processors spend on it, in the system as well: which of them are the system's is
// only guessed from samples.
double processor_time(const Command &command);

// The most memory it has had, in KiB.
int64_t peak_memory(const char *program); // without arguments

} // namespace bench
