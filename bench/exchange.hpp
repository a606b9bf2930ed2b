// A co-processor that answers at once: exchanges cost no more than copying their bytes. It serves
// the blocks of a data set, in order and over again, to counted read-outs and to the live stream,
// and it acknowledges every frame of a download.
//
// The linker redirects a program's calls of ioctl here (--wrap=ioctl), both the module's and the
// yardsticks'.
#pragma once

#include "bench/data_set.hpp"

namespace bench
{

// The next block is the set's first. The set must stay alive.
void serve(const DataSet &set);

} // namespace bench
