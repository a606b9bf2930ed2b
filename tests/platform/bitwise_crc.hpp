// The checksum of the link as its definition has it, bit by bit and without a table: the measure
// for everything the module computes.
#pragma once

#include "tests/platform/transcript.hpp"

uint16_t bitwise_crc(const Bytes &bytes);
