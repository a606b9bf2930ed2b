// The system, counted: each call that a program with the module can make into the kernel. Exchanges
// with the co-processor are no calls here; they go to the test.
#pragma once

#include "link/stm_com_funcs.h"

#include <cstddef>
#include <cstdint>

// How many calls have been made so far, by anybody in the program.
uint64_t calls_so_far();

// What an exchange does.
extern void (*counted_exchange)(const uint8_t *tx, uint8_t *rx, size_t length);

// What is attached as shared memory.
extern RingBuffer counted_segment;
