// Yardstick: a plain counted read-out of records with a temperature, with the module's exchanges and
// clears, the checksum from the byte table, and any renderer.
#pragma once

#include "link/stm_com_funcs.h"

#include <cstdint>

namespace bench
{

using PlainRender = void (*)(const uint8_t *record, char *text);

// The header, if there is one, precedes the records.
void plain_read_records(int32_t count, const char *header, PlainRender render, StmPollFn poll,
                        StmOutputFn output);

} // namespace bench
