// Yardstick: a counted read-out of records with a temperature, the plain way. The same exchanges
// and clears as the module's, the checksum by the byte table, and any renderer.
#pragma once

#include "link/stm_com_funcs.h"

#include <cstdint>

namespace bench
{

using PlainRender = void (*)(const uint8_t *record, char *text);

// The header goes before the records, if there is one.
void plain_read_records(int32_t count, const char *header, PlainRender render, StmPollFn poll,
                        StmOutputFn output);

} // namespace bench
