// A block of records: the request for it, the wait until it is ready, and the walk over its
// records, which are in rx_buffer.
#pragma once

#include "link/link.hpp"
#include "link/waiting.hpp"
#include "readout/record_format.hpp"

namespace stm
{

// Sends a request from the link's short buffers. Returns what stm_transfer returns.
// Kept: the bytes between command and end byte hold what earlier requests left there.
int request_send(uint8_t command);

// The same with a second byte: how many records are wanted, or which stream.
int request_send(uint8_t command, uint8_t second);

// Polls for a block in a counted read-out, or for its header in a stream, follow each other without
// pauses.
constexpr Polling BLOCK_POLLING = {1, STM_BLOCK_POLL_LIMIT, 0};
constexpr Polling HEADER_POLLING = {20, STM_BLOCK_POLL_LIMIT, 0};

// Waits once. A failing exchange is reported with the read-out's own text, a time-out through the
// output callback.
Wait block_wait(const Polling &polling, const char *failure, StmPollFn poll, StmOutputFn output,
                int32_t &ready_at);

// Clears both buffers and waits; after a time-out it pauses and starts again, without limit.
Wait block_await(const Polling &polling, const char *failure, StmPollFn poll, StmOutputFn output,
                 int32_t &ready_at);

// The pause that most read-outs make after a time-out.
void block_pause();

// True if a record's checksum is that of its bytes; otherwise both are reported.
bool record_check(const RecordFormat &format, const uint8_t *record, StmOutputFn output);

// Passes the records of the block to take until check(record, at) refuses one; at is its offset.
// The first is accepted whatever its marker is. The walk ends where no marker follows, or where no
// whole record fits into the buffer. Kept: the block's length does not bound it; the buffer is zero
// after the block.
template <typename Check, typename Take>
void block_walk(const RecordFormat &format, Check check, Take take)
{
    int32_t at = 0;
    do {
        const uint8_t *record = stm_link.rx_buffer + at;
        if (!check(record, at)) {
            return;
        }
        take(record);
        at += format.size;
    } while (at + format.size <= STM_BUFFER_SIZE && stm_link.rx_buffer[at] == STM_RECORD_MARKER);
}

// The same for callers that report both checksums of a refused record.
template <typename Take>
void block_walk(const RecordFormat &format, StmOutputFn output, Take take)
{
    block_walk(
        format,
        [&](const uint8_t *record, int32_t) { return record_check(format, record, output); }, take);
}

} // namespace stm
