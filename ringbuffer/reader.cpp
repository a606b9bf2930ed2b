// The reader's side: takes records out of the ring, checks them once more and shows them.
#include "link/report.hpp"
#include "readout/block.hpp"
#include "readout/render.hpp"
#include "ringbuffer/ring_record.hpp"

#include <unistd.h>

using namespace stm;

namespace
{

constexpr int IDLE_LIMIT = 5000; // checks of an empty ring, in the whole run
constexpr uint32_t IDLE_US = 1'000;

// Reports and closes the ring.
bool fail(int handle, StmOutputFn output, const char *text)
{
    report_message(output, "%s", text);
    RingBuffer_Close(handle);
    return false;
}

// Waits until there is something to read. False if the operation is over.
// Kept: the idle checks of all waits are counted together, and the ring stays open after the last.
bool wait_for_records(int handle, int &idle, StmOutputFn output)
{
    for (;;) {
        const int available = RingBuffer_NewValueAvailable(handle);
        if (available < 0) {
            report_message(output, "Error: RingBuffer_NewValueAvailable() (fd: %d)\n", handle);
            RingBuffer_Close(handle);
            return false;
        }
        if (available > 0) {
            return true;
        }
        if (++idle > IDLE_LIMIT) {
            report_message(output, "Timeout while reading ring buffer (buffer empty?)\n");
            return false;
        }
        usleep(IDLE_US);
    }
}

bool begin_batch(int handle, StmOutputFn output)
{
    if (RingBuffer_MarkLastValue(handle) < 1) {
        return fail(handle, output, "Error: RingBuffer_MarkLastValue()\n");
    }
    if (RingBuffer_GetFirstValue(handle) == nullptr) {
        return fail(handle, output, "RingBuffer_GetFirstValue()\n");
    }
    return true;
}

void show_record(const uint8_t *record, int mode, StmOutputFn output)
{
    if (mode == READOUT_TEXT || mode == READOUT_CSV) {
        output_record(STM_RING_RECORD, record, mode, output);
    }
}

// Kept: the oldest record of the batch is skipped; a wrong checksum (it is the wire's, and rarely
// that of the slot) ends the batch and nothing else.
bool read_batch(int handle, int mode, StmOutputFn output)
{
    do {
        const RingRecord *slot = RingBuffer_GetNextValue(handle);
        if (slot == nullptr) {
            return fail(handle, output, "RingBuffer_GetFirstValue()\n"); // kept: the same text
        }
        const auto *record = reinterpret_cast<const uint8_t *>(slot);
        if (!record_check(STM_RING_RECORD, record, output)) {
            return true;
        }
        show_record(record, mode, output);
    } while (RingBuffer_GetValuesLeft(handle) > 1);
    return true;
}

} // namespace

// Kept: the poll callback is never called.
void stm_ringbuffer_readout(int format, StmPollFn, StmOutputFn output)
{
    output_csv_header(STM_RING_RECORD, format, output);
    const int handle = RingBuffer_Open("r");
    if (handle < 1) {
        report_message(output, "Cannot open Ringbuffer for read\n");
        return;
    }
    int idle = 0;
    while (wait_for_records(handle, idle, output) && begin_batch(handle, output) &&
           read_batch(handle, format, output)) {
    }
}
