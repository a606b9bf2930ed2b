// Records for the output callback, in the mode that the caller of a read-out asks for.
#pragma once

#include "link/stm_com_funcs.h"
#include "readout/record_format.hpp"

// The CSV header, in the CSV mode.
void output_csv_header(const RecordFormat &format, int mode, StmOutputFn output);

// One record of the block in rx_buffer. An unknown mode shows nothing.
void output_record(const RecordFormat &format, const uint8_t *record, int mode, StmOutputFn output);
