// The counted read-outs: blocks of records, as many as it takes. One algorithm for all formats.
//
//     host          request    D   D     00 00          66*length    next request
//     co-processor                 55    high low       records
//
// The next request goes out before the block is looked at, so that the co-processor gathers records
// while the host shows those it has.
#include "link/bytes.hpp"
#include "link/link.hpp"
#include "link/report.hpp"
#include "readout/block_records.hpp"
#include "readout/block_wait.hpp"
#include "readout/record_output.hpp"
#include "readout/render.hpp"
#include "readout/request.hpp"

namespace
{

// A counted read-out: its records, and what it calls its failing exchanges.
struct BlockReadout {
    const RecordFormat &format;
    const char *poll_failure;
    const char *length_failure;
    const char *block_failure;
    const char *request_failure; // of all requests but the first
};

constexpr BlockReadout RECORDS = {STM_RECORD, "SPI datatransfer (1)", "SPI datatransfer (2)",
                                  "SPI datatransfer (3)", "SPI datatransfer (4)"};
constexpr BlockReadout RECORDS_OMEGA = {STM_RECORD_OMEGA, "SPI datatransfer", "SPI datatransfer",
                                        "SPI datatransfer", "SPI datatransfer"};
constexpr BlockReadout RECORDS_TEMP = {STM_RECORD_TEMP, "SPI datatransfer", "SPI datatransfer",
                                       "SPI datatransfer", "SPI datatransfer"};

// Kept: a count below 0 goes out with its low 8 bits.
int request_records(const RecordFormat &format, int64_t remaining)
{
    const int64_t count = remaining < format.most ? remaining : format.most;
    return request_send(format.command, static_cast<uint8_t>(count));
}

bool fail(const char *text)
{
    report_errno(text);
    return false;
}

// Kept: a time-out is told and waited out, and then the same block is waited for again, without
// end.
bool wait_for_block(const BlockReadout &readout, StmPollFn poll, StmOutputFn output)
{
    for (;;) {
        link_clear_buffers();
        const Wait wait = block_wait(readout.poll_failure, poll, output);
        if (wait != Wait::timed_out) {
            return wait == Wait::ready;
        }
        block_pause();
    }
}

// Fetches the block that is ready and asks for the next one. False after a failing exchange.
bool fetch_block(const BlockReadout &readout, int64_t &remaining)
{
    if (link_fetch_pair() < 0) {
        return fail(readout.length_failure);
    }
    // Kept: unlike the lengths of replies, it comes with its high byte first.
    const int32_t length = get_be16(stm_link.rx_buffer);
    if (link_fetch(length) < 0) {
        return fail(readout.block_failure);
    }
    remaining -= length / readout.format.size;
    if (remaining > 0 && request_records(readout.format, remaining) < 0) {
        return fail(readout.request_failure);
    }
    return true;
}

// Kept: the first record is taken whatever its marker is.
void show_records(const RecordFormat &format, int mode, StmOutputFn output)
{
    int32_t at = 0;
    do {
        const uint8_t *record = stm_link.rx_buffer + at;
        if (!record_checksum_ok(format, record)) {
            // Kept: the text says index, the number is a byte's offset.
            report_message(output, "Wrong checksum detected (iCurrentBlockIndex = %d)\n", at);
            return;
        }
        output_record(format, record, mode, output);
    } while (record_follows(format, at));
}

void read_records(const BlockReadout &readout, int count, int mode, StmPollFn poll,
                  StmOutputFn output)
{
    output_csv_header(readout.format, mode, output);
    int64_t remaining = count;
    if (request_records(readout.format, remaining) < 0) {
        report_errno("SPI datatransfer");
        return;
    }
    do {
        if (!wait_for_block(readout, poll, output) || !fetch_block(readout, remaining)) {
            return;
        }
        show_records(readout.format, mode, output);
    } while (remaining > 0);
    stm_sync_transfer();
}

} // namespace

void stm_read_records(int count, int mode, StmPollFn poll, StmOutputFn output)
{
    read_records(RECORDS, count, mode, poll, output);
}

void stm_read_records_omega(int count, int mode, StmPollFn poll, StmOutputFn output)
{
    read_records(RECORDS_OMEGA, count, mode, poll, output);
}

void stm_read_records_temp(int count, int mode, StmPollFn poll, StmOutputFn output)
{
    read_records(RECORDS_TEMP, count, mode, poll, output);
}
