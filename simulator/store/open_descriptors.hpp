// The open descriptors of a board's device, in all programs. The kernel counts them, by a lock that belongs
// to each: what a program duplicates, hands to a child, takes into another program or leaves when it is
// killed needs no counting here.
#pragma once

#include <fcntl.h>

#include <string>

namespace simulator
{

// The first bytes of the stand-in's file, which need not exist to be locked.
inline constexpr int PLACES_OF_DESCRIPTORS = 1024;

struct flock64 lock_of_descriptors(int kind, off64_t from, off64_t length);

// Whether there is one of the device that this file stands in for.
bool has_descriptors(const std::string &stand_in);

} // namespace simulator
