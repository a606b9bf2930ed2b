// The open descriptors of the device, in all programs. The kernel counts them, by a lock that belongs to
// each: what a program duplicates, hands to a child, takes into another program or leaves when it is
// killed needs no counting here.
#pragma once

#include <string>

namespace simulator
{

// The first bytes of the stand-in's file, which need not exist to be locked.
inline constexpr int PLACES_OF_DESCRIPTORS = 1024;

// From now on this is an open descriptor of the device, until the last of its duplicates is closed.
void note_descriptor(int fd);

// Whether there is one of the device that this file stands in for.
bool has_descriptors(const std::string &stand_in);

} // namespace simulator
