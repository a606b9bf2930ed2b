// The watcher: reads the live stream, keeps nothing, and reports what is missing from it.
#include "link/bytes.hpp"
#include "link/report.hpp"
#include "readout/block.hpp"
#include "readout/sample_stream.hpp"

#include <unistd.h>

using namespace stm;

namespace
{

constexpr SampleStream STREAM = {STM_REQUEST_TEMP,
                                 {"SPI datatransfer (wait)", "SPI datatransfer (ACK a)",
                                  "SPI datatransfer (ACK b)", "SPI datatransfer (1)",
                                  "SPI datatransfer (2)"},
                                 true};

constexpr int32_t REL_T_AT = field_named(STM_RECORD_TEMP, "rel_t").offset;
constexpr int32_t BUFFERED_AT = field_named(STM_RECORD_TEMP, "buffered").offset;
constexpr uint8_t FILLED = 190; // reported above this many records in the co-processor's own buffer
constexpr uint32_t DOT_RECORDS = 1000;
constexpr uint32_t DOT_PAUSE_US = 40'000;
constexpr uint32_t BLOCK_PAUSE_US = 20'000;

struct Watch {
    uint32_t records = 0;
    uint32_t last_time = 0; // kept: the first record counts as lost unless its time is 1
};

// The three lines common to both reports.
void report_place(const Watch &watch, const uint8_t *record, StmOutputFn output)
{
    report_message(output, "nr   : %d\n", record[RECORD_NUMBER_AT]);
    report_message(output, "rel_t: %ld\n",
                   static_cast<long>(static_cast<int32_t>(get_le32(record + REL_T_AT))));
    report_message(output, "count: %d\n", static_cast<int32_t>(watch.records));
}

void check_loss(const Watch &watch, const uint8_t *record, StmOutputFn output)
{
    const uint32_t difference = get_le32(record + REL_T_AT) - watch.last_time;
    if (difference != 1) {
        report_message(output, "\nlost sample:\n");
        report_message(output, "difference   : %d\n", static_cast<int32_t>(difference));
        report_place(watch, record, output);
    }
}

void check_overflow(const Watch &watch, const uint8_t *record, StmOutputFn output)
{
    if (record[BUFFERED_AT] > FILLED) {
        report_message(output, "\nbuffer overflow:\n");
        report_place(watch, record, output);
        report_message(output, "buffered: %d\n", record[BUFFERED_AT]);
    }
}

void watch_record(Watch &watch, const uint8_t *record, StmOutputFn output)
{
    ++watch.records;
    check_loss(watch, record, output);
    check_overflow(watch, record, output);
    if (watch.records % DOT_RECORDS == 0) {
        report_diagnostic(".");
        usleep(DOT_PAUSE_US);
    }
    watch.last_time = get_le32(record + REL_T_AT);
}

} // namespace

void stm_stream_readout(StmPollFn poll, StmOutputFn output)
{
    Watch watch;
    if (!stream_begin(STREAM)) {
        return;
    }
    while (stream_fetch_block(STREAM, poll, output) == Wait::ready) {
        block_walk(STREAM.request.format, output,
                   [&](const uint8_t *record) { watch_record(watch, record, output); });
        usleep(BLOCK_PAUSE_US);
    }
}
