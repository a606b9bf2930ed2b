// A co-processor that answers at once. The linker redirects the module's calls to it (--wrap); it
// copies the contents of a block into place and does nothing else.
#pragma once

#include "link/stm_com_funcs.h"

// NOLINTNEXTLINE(bugprone-dynamic-static-initializers): only declared here
extern RingBuffer counted_ring; // what RingBuffer_Attach attaches

// The exchanges of blocks without the module: the cost of the device itself.
void exchange_read_blocks(int blocks);
void exchange_stream_blocks(int blocks);
