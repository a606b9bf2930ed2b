// The live stream: blocks of whatever records the co-processor has collected, one after another
// until it is stopped. Its framing is the same for all its users.
#pragma once

#include "link/waiting.hpp"
#include "readout/record_format.hpp"

namespace stm
{

// A stream user's texts for failing exchanges.
struct StreamFailures {
    const char *wait;      // a poll
    const char *two_bytes; // of the length, when the header ends at 0x55
    const char *one_byte;  // of the length, when the header ends within it
    const char *data;
    const char *request; // of the next block
};

// The text that most users have for all of them.
constexpr StreamFailures STREAM_FAILURES = {"SPI datatransfer", "SPI datatransfer",
                                            "SPI datatransfer", "SPI datatransfer",
                                            "SPI datatransfer"};

struct SampleStream {
    const RecordRequest &request;
    StreamFailures failures;
    bool watched; // reports the size of a failing exchange, and empty blocks
};

// Requests the first block. False after a failing exchange, which is reported.
bool stream_begin(const SampleStream &stream);

// Waits for a block, fetches it to rx_buffer and requests the next one. Wait::ready if the block is
// there; otherwise the operation is over, and a failing exchange has been reported.
Wait stream_fetch_block(const SampleStream &stream, StmPollFn poll, StmOutputFn output);

} // namespace stm
