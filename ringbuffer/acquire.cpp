// The writer's side: puts records of the live stream, checked and repacked, into the ring.
#include "link/report.hpp"
#include "readout/block.hpp"
#include "readout/sample_stream.hpp"
#include "ringbuffer/ring.hpp"

using namespace stm;

namespace
{

constexpr SampleStream STREAM = {STM_REQUEST_TEMP, STREAM_FAILURES, false};

// Kept: a record that cannot be put closes the ring, and the next one is still tried.
void put_record(int handle, const uint8_t *record, StmOutputFn output)
{
    if (ring_put_from_wire(handle, record) < 1) {
        report_message(output, "Error: Writing to ringbuffer\n");
        RingBuffer_Close(handle);
    }
}

} // namespace

void stm_ringbuffer_acquire(StmPollFn poll, StmOutputFn output)
{
    const int handle = RingBuffer_Open("w");
    if (handle < 1) {
        report_message(output, "Cannot open ringbuffer for write\n");
        return;
    }
    if (stream_begin(STREAM)) {
        while (stream_fetch_block(STREAM, poll, output) == Wait::ready) {
            block_walk(STREAM.request.format, output,
                       [&](const uint8_t *record) { put_record(handle, record, output); });
        }
    }
    RingBuffer_Close(handle);
}
