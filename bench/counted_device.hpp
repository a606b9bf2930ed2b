// A co-processor that answers at once. The linker sends the module's calls to it (--wrap); it
// copies what a block holds into place and does nothing else.
#pragma once

#include "link/stm_com_funcs.h"

// NOLINTNEXTLINE(bugprone-dynamic-static-initializers): only declared here
extern RingBuffer counted_ring; // what RingBuffer_Attach attaches

// The exchanges of blocks without the module: what the device itself costs.
void exchange_read_blocks(int blocks);
void exchange_stream_blocks(int blocks);
