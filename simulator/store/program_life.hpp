// Whether a program that once was here is still there, whatever became of its number.
#pragma once

#include <cstdint>

namespace simulator
{

// A process, and when it began: numbers are used again.
struct ProgramLife {
    uint32_t process = 0; // 0 for none
    uint32_t unused = 0;
    uint64_t start = 0; // as the kernel counts it; 0 if that is not known

    bool operator==(const ProgramLife &) const = default;
};

ProgramLife this_program();

// A program that waits for nothing but its parent's attention is not.
bool is_alive(const ProgramLife &program);

} // namespace simulator
