// Programs without arguments, run as processes of their own.
#pragma once

#include <cstdint>
#include <string>

namespace bench
{

struct Ended {
    int status; // as exit gives it, -1 after any other end
    std::string output;
};

// Runs it and gathers its standard output.
Ended run(const char *program);

// The seconds from its start to its end, its output thrown away.
double run_time(const char *program);

// The most memory it has had, in KiB.
int64_t peak_memory(const char *program);

} // namespace bench
