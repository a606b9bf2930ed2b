// What records and follow have in common: they read out measurement records.
#include "stmctl/records/readout.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/record/record_writer.hpp"
#include "stmctl/records/variants.hpp"
#include "stmctl/stream/live_line.hpp"
#include "stmctl/stream/record_stream.hpp"
#include "stmctl/stream/repetition.hpp"
#include "stmctl/stream/verdict.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

Outcome ask(const Variant &variant, bool live, uint32_t count, int mode, const Sink &sink, Run &run)
{
    return perform(
        [&](StmPollFn poll, StmOutputFn output) {
            if (live) {
                variant.follow(mode, poll, output);
            } else {
                variant.read(static_cast<int>(count), mode, poll, output);
            }
            return 0;
        },
        sink, [&run] { return run.ask(); });
}

std::string summary_of(const char *name, const RecordTally &tally, std::optional<uint32_t> wanted,
                       Ending ending)
{
    const bool early = ending == Ending::stopped && wanted;
    return fmt::format("{}: {}{}", name, tally.summary(wanted),
                       early ? "; stopped before all had arrived" : "");
}

ExitStatus judge(const ReadoutOptions &options, const RecordTally &tally,
                 std::optional<uint32_t> wanted, Ending ending)
{
    if (ending == Ending::done && wanted && tally.records < *wanted) {
        return ExitStatus::failed; // its time was over
    }
    if (ending == Ending::done && tally.rejected > 0 && !options.run.keep_going) {
        return ExitStatus::failed;
    }
    return status_of(ending, options.run, tally);
}

// A single record, unless the user says how many or how long.
std::optional<uint32_t> default_count(const ReadoutOptions &options, bool live)
{
    const bool bounded = live || !options.run.duration.empty();
    return bounded ? std::nullopt : std::optional<uint32_t>(1);
}

StreamOptions checked(const char *name, const ReadoutOptions &options, bool live)
{
    if (options.run.fail_on_loss && options.format.checked() == Format::hex) {
        throw Failure(
            ExitStatus::usage,
            "--fail-on-loss cannot be combined with --format hex, which does not show losses");
    }
    const std::optional<uint32_t> wanted = options.run.wanted();
    return {name, wanted ? wanted : default_count(options, live), options.run.keep_going,
            options.run.silence_given()};
}

} // namespace

ExitStatus read_records(const char *name, const ReadoutOptions &options, bool live)
{
    constexpr uint32_t ENDLESS = 0x7FFFFFFF;
    const Variant &variant = variant_named(options.variant);
    const Format format = options.format.checked();
    const CsvForm form = options.format.csv_form();
    const StreamOptions stream_options = checked(name, options, live);
    const std::optional<uint32_t> wanted = stream_options.wanted;
    const auto time = options.run.time();
    RecordTally tally;
    Destination destination(
        options.format.file, options.format.old_content(),
        beginning_of_records(format, options.format.timestamps, columns_of(variant.kind), form));
    SummaryFile summary(options.run.summary, tally, wanted, &destination);
    Device device(options.device);
    destination.begin();
    summary.begin();
    RecordWriter writer(format, options.format.timestamps, columns_of(variant.kind), destination,
                        form);
    RegularFlush flush(destination);
    LiveLine line(name, tally, &destination);
    RecordStream *watched = nullptr;
    Run run(time, [&](Run::Time now) {
        flush(now);
        watched->look(now);
        line.tick(now);
        if (destination.failed()) {
            run.finish();
        }
    });
    RecordStream stream(stream_options, run, tally,
                        [&](const char *text) { return writer.take(text); });
    watched = &stream;
    const auto once = [&] {
        const uint32_t rest = wanted.value_or(ENDLESS) - static_cast<uint32_t>(tally.records);
        return ask(variant, live, rest, mode_for(format), stream.sink(), run);
    };
    const Ending ending = repeat({device, stream, once}, run, tally);
    writer.finish();
    destination.flush();
    if (reader_has_left()) {
        return status_of_failed_output();
    }
    const ExitStatus status = judge(options, tally, wanted, ending);
    if (live || !tally.is_flawless() || ending != Ending::done || destination.failed()) {
        sum_up(summary_of(name, tally, wanted, ending), status);
    }
    destination.finish();
    summary.finish();
    if (output_failed()) {
        return status_of_failed_output(); // finish_output reports why
    }
    return status;
}

std::shared_ptr<ReadoutOptions> declare_readout(CLI::App &command, const char *counted)
{
    auto options = std::make_shared<ReadoutOptions>();
    add_option(command, "--variant", "VARIANT", options->variant, "kind of record",
               one_of(variant_names()));
    add_run_limits(command, options->run, counted);
    add_format_options(command, options->format, {"text", "csv", "hex", "jsonl"});
    add_keep_going(command, options->run);
    add_judgement(command, options->run, SILENCE_HELP);
    add_device_options(command, options->device);
    add_detail(command);
    return options;
}

} // namespace stmctl
