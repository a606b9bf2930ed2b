// What records and follow have in common: a read-out of measurement records.
#include "stmctl/records/readout.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/record/record_writer.hpp"
#include "stmctl/records/variants.hpp"
#include "stmctl/stream/record_stream.hpp"
#include "stmctl/stream/repetition.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

Outcome ask(const Variant &variant, bool live, uint32_t count, int mode, const Sink &sink)
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
        sink, poll_run);
}

void say_summary(const char *name, const RecordTally &tally, std::optional<uint32_t> wanted,
                 Ending ending)
{
    const bool early = ending == Ending::stopped && wanted;
    say(fmt::format("{}: {}{}", name, tally.summary(wanted),
                    early ? "; stopped before all had come" : ""));
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

// A single record, unless somebody says how many or how long.
std::optional<uint32_t> default_count(const ReadoutOptions &options, bool live)
{
    const bool bounded = live || !options.run.duration.empty();
    return bounded ? std::nullopt : std::optional<uint32_t>(1);
}

} // namespace

ExitStatus read_records(const char *name, const ReadoutOptions &options, bool live)
{
    constexpr uint32_t ENDLESS = 0x7FFFFFFF;
    const Variant &variant = variant_named(options.variant);
    const Format format = options.format.checked();
    std::optional<uint32_t> wanted = options.run.wanted();
    const auto time = options.run.time();
    wanted = wanted ? wanted : default_count(options, live);
    Destination destination(options.format.file);
    const Device device(options.device);
    destination.begin();
    RecordWriter writer(format, options.format.timestamps, columns_of(variant.kind), destination);
    RegularFlush flush(destination);
    Run run(time, std::ref(flush));
    RecordTally tally;
    RecordStream stream(name, run, wanted, options.run.keep_going, tally,
                        [&](const char *text) { return writer.take(text); });
    const auto once = [&] {
        const uint32_t rest = wanted.value_or(ENDLESS) - static_cast<uint32_t>(tally.records);
        return ask(variant, live, rest, mode_for(format), stream.sink());
    };
    const Ending ending = repeat({name, options.run.keep_going, once}, run, tally);
    destination.finish();
    if (output_failed()) {
        return status_of_failed_output(); // the end of every run tells why
    }
    if (live || !tally.is_flawless() || ending != Ending::done) {
        say_summary(name, tally, wanted, ending);
    }
    return judge(options, tally, wanted, ending);
}

std::shared_ptr<ReadoutOptions> declare_readout(CLI::App &command, const char *counted)
{
    auto options = std::make_shared<ReadoutOptions>();
    add_option(command, "--variant", "VARIANT", options->variant, "kind of the records",
               one_of(variant_names()));
    add_run_limits(command, options->run, counted);
    add_format_options(command, options->format, {"text", "csv", "hex", "jsonl"});
    add_keep_going(command, options->run);
    add_device_options(command, options->device);
    return options;
}

} // namespace stmctl
