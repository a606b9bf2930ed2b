// The stop line.
#include "link/waiting.hpp"

#include <cstring>

bool stop_requested(StmPollFn poll)
{
    char line[STM_LINE_SIZE] = {};
    return poll(line) != 0 && strcmp(line, STM_STOP_LINE) == 0;
}
