// Programs, run as processes of their own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench
{

using Command = std::vector<std::string>; // the program, and its arguments

struct Ended {
    int status; // as passed to exit, -1 after any other end
    std::string output;
};

// Runs it and collects its standard output.
Ended run(const Command &command);

// The seconds from its start to its end, with its output discarded.
double run_time(const Command &command);

// The seconds of processor time spent on it, including the system's: the system's share is only
// estimated from samples.
double processor_time(const Command &command);

// The most memory it used, in KiB.
int64_t peak_memory(const char *program); // without arguments

} // namespace bench
