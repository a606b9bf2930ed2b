// The walk over the records of a block in rx_buffer.
#pragma once

#include "link/stm_com_funcs.h"
#include "readout/record_format.hpp"

// Goes on to the next record; false if there is none. The walk ends where no marker follows, and
// where no whole record fits into the buffer any more. Kept: the block's length does not bound it;
// behind the block the buffer is zero.
bool record_follows(const RecordFormat &format, int32_t &at);

// True if a record's checksum is that of its bytes; otherwise both are reported.
bool record_check(const RecordFormat &format, const uint8_t *record, StmOutputFn output);
