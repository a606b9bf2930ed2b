// Request frames of the read-outs.
#pragma once

#include <cstdint>

// Sends a request from the link's short buffers. Returns what stm_transfer returns.
// Kept: the bytes between command and end keep what earlier requests left there.
int request_send(uint8_t command);

// The same with a second byte: how many records are wanted, or which stream.
int request_send(uint8_t command, uint8_t second);
