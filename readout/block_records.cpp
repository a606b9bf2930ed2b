// The walk over the records of a block.
#include "readout/block_records.hpp"

#include "link/link.hpp"
#include "link/report.hpp"
#include "readout/render.hpp"

bool record_follows(const RecordFormat &format, int32_t &at)
{
    at += format.size;
    return at + format.size <= STM_BUFFER_SIZE && stm_link.rx_buffer[at] == STM_RECORD_MARKER;
}

bool record_check(const RecordFormat &format, const uint8_t *record, StmOutputFn output)
{
    const uint16_t computed = record_checksum(format, record);
    const uint16_t stored = record_stored_checksum(format, record);
    if (computed == stored) {
        return true;
    }
    report_message(output, "Wrong checksum detected (crc = %X, checksum= %X)\n", computed, stored);
    return false;
}
