// The heap of the test program, counted: every block that anybody in the process takes, the C
// library and the C++ runtime included.
#pragma once

#include <cstdint>

// How many blocks have been taken or resized so far.
uint64_t allocations_so_far();
