// The live stream: blocks of whatever records the co-processor has gathered, one after another
// until somebody stops it. Its framing is the same for all who use it.
#pragma once

#include "link/waiting.hpp"
#include "readout/record_format.hpp"

namespace stm
{

// What a user of the stream calls its failing exchanges.
struct StreamFailures {
    const char *wait;      // a poll
    const char *two_bytes; // of the length, when the header ends at 0x55
    const char *one_byte;  // of the length, when the header ends within it
    const char *data;
    const char *request; // of the next block
};

// The one name that most have for all of them.
constexpr StreamFailures STREAM_FAILURES = {"SPI datatransfer", "SPI datatransfer",
                                            "SPI datatransfer", "SPI datatransfer",
                                            "SPI datatransfer"};

struct SampleStream {
    const RecordRequest &request;
    StreamFailures failures;
    bool watched; // tells the size of a failing exchange, and that a block is empty
};

// Asks for the first block. False after a failing exchange, which is reported.
bool stream_begin(const SampleStream &stream);

// Waits for a block, fetches it to rx_buffer and asks for the next one. Wait::ready if it is there;
// else the operation is over, and a failing exchange has been reported.
Wait stream_fetch_block(const SampleStream &stream, StmPollFn poll, StmOutputFn output);

} // namespace stm
