// One frame of an image download, 1034 bytes at the start of the link's transmit buffer:
//
//     0  checksum over bytes 2 to 1033     6  size of the file, or of this block
//     2  flash start address              10  the block's bytes
//
// Kept: clearing stops at byte 1024, ten bytes short of the frame's end. A header, or a block of
// fewer than 1024 bytes, therefore sends whatever an earlier frame left there (after opening:
// 0x66), and the checksum covers it. The size says how many bytes are data.
#pragma once

#include "link/link.hpp"

namespace stm
{

// Clears the frame except for its tail, and returns where its STM_BLOCK_SIZE bytes of data go.
uint8_t *image_frame_begin();

// Completes the frame with its address, its size and its checksum, which it returns.
uint16_t image_frame_finish(uint32_t address, uint32_t size);

// Exchanges the frame. Negative on failure.
int image_frame_send();

} // namespace stm
