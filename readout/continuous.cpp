// The continuous read-outs: the live stream, record by record, until it is stopped. One algorithm
// for all formats.
#include "readout/block.hpp"
#include "readout/render.hpp"
#include "readout/sample_stream.hpp"

#include <unistd.h>

using namespace stm;

namespace
{

constexpr int SLOWED_BLOCKS = 10; // after this many blocks the pause is longer

// A continuous read-out: its stream, and its pauses in microseconds; 0 for none.
struct ContinuousReadout {
    SampleStream stream;
    uint32_t block_pause_us;
    uint32_t slow_pause_us; // in addition, after every tenth block
};

constexpr ContinuousReadout RECORDS = {{STM_REQUEST, STREAM_FAILURES, false}, 0, 0};
constexpr ContinuousReadout RECORDS_OMEGA = {{STM_REQUEST_OMEGA, STREAM_FAILURES, false}, 0, 0};
constexpr ContinuousReadout RECORDS_TEMP = {
    {STM_REQUEST_TEMP_LIVE, STREAM_FAILURES, false}, 20'000, 60'000};

// Kept: only one of the read-outs pauses.
void pause(const ContinuousReadout &readout, int &blocks)
{
    if (++blocks == SLOWED_BLOCKS) {
        blocks = 0;
        if (readout.slow_pause_us != 0) {
            usleep(readout.slow_pause_us);
        }
    }
    if (readout.block_pause_us != 0) {
        usleep(readout.block_pause_us);
    }
}

void read_continuously(const ContinuousReadout &readout, int mode, StmPollFn poll,
                       StmOutputFn output)
{
    const RecordFormat &format = readout.stream.request.format;
    output_csv_header(format, mode, output);
    if (!stream_begin(readout.stream)) {
        return;
    }
    int blocks = 0;
    while (stream_fetch_block(readout.stream, poll, output) == Wait::ready) {
        block_walk(format, output,
                   [&](const uint8_t *record) { output_record(format, record, mode, output); });
        pause(readout, blocks);
    }
}

} // namespace

void stm_continuous_readout(int format, StmPollFn poll, StmOutputFn output)
{
    read_continuously(RECORDS, format, poll, output);
}

void stm_continuous_readout_omega(int format, StmPollFn poll, StmOutputFn output)
{
    read_continuously(RECORDS_OMEGA, format, poll, output);
}

void stm_continuous_readout_temp(int format, StmPollFn poll, StmOutputFn output)
{
    read_continuously(RECORDS_TEMP, format, poll, output);
}
