// The continuous read-outs: the live stream, record by record, until somebody stops it. One
// algorithm for all formats.
#include "link/link.hpp"
#include "readout/block_records.hpp"
#include "readout/record_output.hpp"
#include "readout/sample_stream.hpp"

#include <unistd.h>

namespace
{

constexpr int SLOWED_BLOCKS = 10; // after so many blocks a longer pause is made

// A continuous read-out: its stream, and its pauses in microseconds; 0 for none.
struct ContinuousReadout {
    SampleStream stream;
    uint32_t block_pause_us;
    uint32_t slow_pause_us; // before it, after every tenth block
};

constexpr ContinuousReadout RECORDS = {{STM_RECORD, 'I', STREAM_FAILURES, false}, 0, 0};
constexpr ContinuousReadout RECORDS_OMEGA = {{STM_RECORD_OMEGA, 'N', STREAM_FAILURES, false}, 0, 0};
constexpr ContinuousReadout RECORDS_TEMP = {
    {STM_RECORD_TEMP_LIVE, 'U', STREAM_FAILURES, false}, 20'000, 60'000};

void show_records(const RecordFormat &format, int mode, StmOutputFn output)
{
    int32_t at = 0;
    do {
        const uint8_t *record = stm_link.rx_buffer + at;
        if (!record_check(format, record, output)) {
            return;
        }
        output_record(format, record, mode, output);
    } while (record_follows(format, at));
}

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
    const RecordFormat &format = readout.stream.format;
    output_csv_header(format, mode, output);
    if (!stream_begin(readout.stream)) {
        return;
    }
    int blocks = 0;
    while (stream_fetch_block(readout.stream, poll, output) == Wait::ready) {
        show_records(format, mode, output);
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
