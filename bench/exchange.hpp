// A co-processor that answers at once: exchanges cost no more than the copy of their bytes. It
// serves the blocks of a data set, in order and again from the first, to counted read-outs and to
// the live stream, and it acknowledges every frame of a download.
//
// The linker sends a program's calls of ioctl here (--wrap=ioctl), the module's and the yardsticks'
// alike.
#pragma once

#include "bench/data_set.hpp"

namespace bench
{

// The next block is the set's first. The set must stay.
void serve(const DataSet &set);

} // namespace bench
