// What adc and raw have in common: frames, read one after another.
#include "stmctl/records/frames.hpp"

#include "stmctl/module/device.hpp"
#include "stmctl/output/destination.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/stream/repetition.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

namespace
{

struct Options {
    RunOptions run;
    FormatOptions format;
    DeviceOptions device;
};

class Frames
{
  public:
    Frames(const FrameKind &kind, const FormatOptions &options, Destination &destination)
        : kind_(kind), options_(options), mode_(mode_for(options.checked())),
          destination_(destination)
    {
    }

    RecordTally &tally() { return tally_; }

    Outcome read_one()
    {
        const bool table = mode_ == READOUT_CSV;
        const RecordTally before = tally_;
        std::string text;
        bool header_to_come = table && kind_.has_header;
        Outcome outcome = perform(
            [&](StmPollFn poll, StmOutputFn output) {
                kind_.read(mode_, poll, output);
                return 0;
            },
            [&](const char *piece, int more) {
                // The header stands behind what the module said before, and may be cut.
                const bool is_header = header_to_come && more != 0;
                header_to_come = header_to_come && !is_header;
                text += is_header || tally_.take_report(piece) ? "" : piece;
            },
            poll_run);
        if (tally_.timeouts > before.timeouts) {
            tally_.rejected = before.rejected; // what was not there cannot be wrong
        }
        const bool came = !outcome.cut_off && outcome.failures.empty() &&
                          tally_.timeouts + tally_.rejected == before.timeouts + before.rejected &&
                          !text.empty();
        if (came) {
            destination_.write(table ? kind_.render(text, options_, tally_.records == 0) : text);
            ++tally_.records;
        }
        return outcome;
    }

  private:
    const FrameKind &kind_;
    const FormatOptions &options_;
    int mode_;
    Destination &destination_;
    RecordTally tally_;
};

// Frames until a good one is missing, or as many as are wanted have come.
Outcome read_frames(Frames &frames, Run &run, std::optional<uint32_t> wanted)
{
    for (;;) {
        const uint64_t before = frames.tally().records;
        Outcome outcome = frames.read_one();
        if (wanted && frames.tally().records >= *wanted) {
            run.finish();
        }
        if (outcome.stopped || run.over() || frames.tally().records == before) {
            return outcome;
        }
    }
}

void say_summary(const FrameKind &kind, const RecordTally &tally, std::optional<uint32_t> wanted)
{
    const std::string of = wanted ? fmt::format("{} of ", tally.records) : "";
    say(fmt::format(
        "{}: {}{}, {} rejected, {} not ready in time, {}{}", kind.name, of,
        counted(wanted ? *wanted : tally.records, "frame", "frames"), tally.rejected,
        tally.timeouts, counted(tally.failures, "failing exchange", "failing exchanges"),
        tally.records == 0 && tally.timeouts > 0 ? "; does the application run? See stmctl state"
                                                 : ""));
}

ExitStatus read(const FrameKind &kind, const Options &options)
{
    std::optional<uint32_t> wanted = options.run.wanted();
    const auto time = options.run.time();
    options.format.checked();
    if (!wanted && !time) {
        wanted = 1;
    }
    Destination destination(options.format.file);
    const Device device(options.device);
    destination.begin();
    Run run(time);
    Frames frames(kind, options.format, destination);
    const auto once = [&] { return read_frames(frames, run, wanted); };
    const Ending ending = repeat({kind.name, options.run.keep_going, once}, run, frames.tally());
    destination.finish();
    if (output_failed()) {
        return status_of_failed_output(); // the end of every run tells why
    }
    const bool missing = wanted && frames.tally().records < *wanted;
    if (!frames.tally().is_flawless() || ending != Ending::done || missing) {
        say_summary(kind, frames.tally(), wanted);
    }
    if (ending == Ending::stopped) {
        return ExitStatus::stopped;
    }
    return missing ? ExitStatus::failed : status_of(ending, options.run, frames.tally());
}

} // namespace

Action declare_frames(CLI::App &command, const FrameKind &kind)
{
    auto options = std::make_shared<Options>();
    add_run_limits(command, options->run, "how many frames; 1 if --duration is not given either");
    add_format_options(command, options->format, {"text", "csv", "hex", "jsonl"});
    add_keep_going(command, options->run);
    add_device_options(command, options->device);
    return [options, &kind] { return read(kind, *options); };
}

} // namespace stmctl
