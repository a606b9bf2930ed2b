// watch: monitors the live stream of records.
#include "stmctl/records/records.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/record/record_writer.hpp"
#include "stmctl/records/stream_watch.hpp"
#include "stmctl/records/variants.hpp"
#include "stmctl/stream/record_stream.hpp"
#include "stmctl/stream/repetition.hpp"
#include "stmctl/stream/verdict.hpp"

#include <memory>

namespace stmctl
{

namespace
{

struct Options {
    std::string variant = "temp";
    RunOptions run;
    DeviceOptions device;
};

ExitStatus watch(const Options &options)
{
    const Variant &variant = variant_named(options.variant);
    const Columns &columns = columns_of(variant.kind);
    const auto time = options.run.time();
    const StreamOptions stream_options = {
        "watch", {}, options.run.keep_going, options.run.silence_given()};
    RecordTally tally;
    const Destination shown("-");
    SummaryFile summary(options.run.summary, tally, {}, &shown);
    Device device(options.device);
    summary.begin();
    StreamWatch display(tally);
    RecordStream *watched = nullptr;
    Run run(time, [&](Run::Time now) {
        watched->look(now);
        display.tick(now);
    });
    RecordStream stream(stream_options, run, tally,
                        [&](const char *text) { return checked_facts_of_text(columns, text); });
    watched = &stream;
    const auto once = [&] {
        return perform(
            [&](StmPollFn poll, StmOutputFn output) {
                variant.follow(READOUT_TEXT, poll, output); // includes those that CSV omits
                return 0;
            },
            stream.sink(), [&run] { return run.ask(); });
    };
    const Ending ending = repeat({device, stream, once}, run, tally);
    summary.finish();
    display.finish();
    if (reader_has_left()) {
        return status_of_failed_output();
    }
    const ExitStatus status = status_of(ending, options.run, tally);
    sum_up("watch: " + tally.summary({}), status);
    return output_failed() ? status_of_failed_output() : status; // finish_output reports why
}

} // namespace

Action declare_watch(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_option(command, "--variant", "VARIANT", options->variant, "kind of record",
               one_of(variant_names()));
    add_duration(command, options->run);
    add_keep_going(command, options->run);
    add_judgement(command, options->run, SILENCE_HELP);
    add_device_options(command, options->device);
    add_detail(command);
    return [options] { return watch(*options); };
}

} // namespace stmctl
