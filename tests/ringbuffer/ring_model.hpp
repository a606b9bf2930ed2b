// The ring as arithmetic on the bytes of a segment: the measure for segments of random bytes.
#pragma once

#include "tests/platform/transcript.hpp"

#include <span>

// What an operation is called with, and what comes of it. Slots are numbers here, -1 for none.
struct RingOperation {
    const char *name;
    int (*run)(int handle, int n, const uint8_t *segment); // the true operation
    int (*model)(Bytes &segment, int handle, int n);       // what it must do
};

std::span<const RingOperation> ring_operations();

// The record that every put in here puts.
extern const Bytes MODEL_RECORD;
