// This program's open descriptors of the device, which are counted.
#pragma once

namespace simulator
{

// From now on this is an open descriptor of the device, until the last of its duplicates is closed.
void note_descriptor(int fd);

} // namespace simulator
