// The counted read-outs: as many blocks of records as necessary. One algorithm for all formats.
//
//     host          request    D   D     00 00          66*length    next request
//     co-processor                 55    high low       records
//
// The next request is sent before the block is processed, so that the co-processor collects records
// while the host shows those it has.
#include "link/bytes.hpp"
#include "link/link.hpp"
#include "link/report.hpp"
#include "readout/block.hpp"
#include "readout/render.hpp"

using namespace stm;

namespace
{

// A counted read-out: its records, and its texts for failing exchanges.
struct BlockReadout {
    const RecordRequest &request;
    const char *poll_failure;
    const char *length_failure;
    const char *block_failure;
    const char *request_failure; // of all requests but the first
};

constexpr BlockReadout RECORDS = {STM_REQUEST, "SPI datatransfer (1)", "SPI datatransfer (2)",
                                  "SPI datatransfer (3)", "SPI datatransfer (4)"};
constexpr BlockReadout RECORDS_OMEGA = {STM_REQUEST_OMEGA, "SPI datatransfer", "SPI datatransfer",
                                        "SPI datatransfer", "SPI datatransfer"};
constexpr BlockReadout RECORDS_TEMP = {STM_REQUEST_TEMP, "SPI datatransfer", "SPI datatransfer",
                                       "SPI datatransfer", "SPI datatransfer"};

// Kept: of a negative count, the low 8 bits are sent.
int request_records(const RecordRequest &request, int64_t remaining)
{
    const int64_t count = remaining < request.most ? remaining : request.most;
    return request_send(request.command, static_cast<uint8_t>(count));
}

bool fail(const char *text)
{
    report_errno(text);
    return false;
}

// Kept: after a time-out it waits for the same block again, without limit.
bool wait_for_block(const BlockReadout &readout, StmPollFn poll, StmOutputFn output)
{
    int32_t at_once = 0; // the answer to a poll is one byte
    return block_await(BLOCK_POLLING, readout.poll_failure, poll, output, at_once) == Wait::ready;
}

// Fetches the block that is ready and requests the next one. False after a failing exchange.
bool fetch_block(const BlockReadout &readout, int64_t &remaining)
{
    if (link_fetch_pair() < 0) {
        return fail(readout.length_failure);
    }
    // Kept: unlike the length of a reply, it comes high byte first.
    const int32_t length = get_be16(stm_link.rx_buffer);
    if (link_fetch(length) < 0) {
        return fail(readout.block_failure);
    }
    remaining -= length / readout.request.format.size;
    if (remaining > 0 && request_records(readout.request, remaining) < 0) {
        return fail(readout.request_failure);
    }
    return true;
}

// Kept: a wrong checksum is reported with the record's place; the text says "index", but the number
// is an offset in bytes.
void show_records(const RecordFormat &format, int mode, StmOutputFn output)
{
    const auto check = [&](const uint8_t *record, int32_t at) {
        const bool good = record_checksum_ok(format, record);
        if (!good) {
            report_message(output, "Wrong checksum detected (iCurrentBlockIndex = %d)\n", at);
        }
        return good;
    };
    block_walk(format, check,
               [&](const uint8_t *record) { output_record(format, record, mode, output); });
}

void read_records(const BlockReadout &readout, int count, int mode, StmPollFn poll,
                  StmOutputFn output)
{
    const RecordFormat &format = readout.request.format;
    output_csv_header(format, mode, output);
    int64_t remaining = count;
    if (request_records(readout.request, remaining) < 0) {
        report_errno("SPI datatransfer");
        return;
    }
    do {
        if (!wait_for_block(readout, poll, output) || !fetch_block(readout, remaining)) {
            return;
        }
        show_records(format, mode, output);
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
