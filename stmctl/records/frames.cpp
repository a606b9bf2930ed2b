// What adc and raw have in common: they read frames one after another.
#include "stmctl/records/frames.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/diagnosis.hpp"
#include "stmctl/output/destination.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/stream/live_line.hpp"
#include "stmctl/stream/repetition.hpp"
#include "stmctl/stream/verdict.hpp"

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

FrameLook look_of(const FormatOptions &options, bool several)
{
    return {options.format == "csv", options.timestamps, several};
}

// How a file with such frames begins; empty if unknown.
std::string beginning_of_frames(const FrameKind &kind, const FormatOptions &options, bool several)
{
    switch (options.checked()) {
    case Format::csv:
        return in_form(options.csv_form(), kind.beginning(look_of(options, several)));
    case Format::jsonl:
        return "{";
    default:
        return "";
    }
}

class Frames
{
  public:
    Frames(const FrameKind &kind, const FormatOptions &options, bool several,
           Destination &destination, RecordTally &tally)
        : kind_(kind), form_(options.csv_form()), look_(look_of(options, several)),
          mode_(mode_for(options.checked())), destination_(destination), tally_(tally)
    {
    }

    // The tally shows whether it came whole.

    Outcome read_one(RecordStream &stream, Run &run)
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
                // The header comes after earlier texts of the module, and may be truncated.
                const bool is_header = header_to_come && more != 0;
                header_to_come = header_to_come && !is_header;
                text += is_header || take_report(piece) ? "" : piece;
            },
            [&run] { return run.ask(); });
        if (tally_.timeouts > before.timeouts) {
            tally_.rejected = before.rejected; // what did not come cannot be wrong
        }
        const bool came = !outcome.cut_off && outcome.failures.empty() &&
                          tally_.timeouts + tally_.rejected == before.timeouts + before.rejected &&
                          !text.empty();
        if (came) {
            show(text);
            stream.take({});
            stream.look(std::chrono::steady_clock::now());
        }
        return outcome;
    }

  private:
    void show(const std::string &text)
    {
        if (mode_ != READOUT_CSV) {
            destination_.write(text);
            return;
        }
        std::string lines = kind_.render(text, look_, tally_.records + 1);
        const bool is_first = tally_.records == 0 && !destination_.continues();
        if (look_.csv && kind_.has_header && is_first) {
            lines = kind_.beginning(look_) + lines;
        }
        destination_.write(look_.csv ? in_form(form_, lines) : lines);
    }

    bool take_report(const char *text)
    {
        const Event event = hear(text).event;
        tally_.timeouts += event == Event::timed_out ? 1 : 0;
        tally_.rejected += event == Event::rejected ? 1 : 0;
        return event == Event::timed_out || event == Event::rejected;
    }

    const FrameKind &kind_;
    CsvForm form_;
    FrameLook look_;
    int mode_;
    Destination &destination_;
    RecordTally &tally_;
};

// Reads frames until one fails, or as many as wanted have come.
Outcome read_frames(Frames &frames, RecordStream &stream, Run &run, const RecordTally &tally)
{
    for (;;) {
        const uint64_t before = tally.records;
        Outcome outcome = frames.read_one(stream, run);
        if (outcome.stopped || run.over() || tally.records == before) {
            return outcome;
        }
    }
}

// The cause, unless the run has already reported it.
std::string cause_of(const RecordTally &tally, const Device &device)
{
    const bool told = tally.failures > 0 || tally.silences > 0;
    return tally.records == 0 && tally.timeouts > 0 && !told ? "; " + diagnose(device).words : "";
}

std::string summary_of(const FrameKind &kind, const RecordTally &tally,
                       std::optional<uint32_t> wanted, const Device &device)
{
    const std::string of = wanted ? fmt::format("{} of ", tally.records) : "";
    return fmt::format("{}: {}{}, {} rejected, {} not ready in time, {}{}", kind.name, of,
                       counted(wanted ? *wanted : tally.records, "frame", "frames"), tally.rejected,
                       tally.timeouts,
                       counted(tally.failures, "failing exchange", "failing exchanges"),
                       cause_of(tally, device));
}

ExitStatus judge(const Options &options, const RecordTally &tally, bool missing, Ending ending)
{
    if (ending == Ending::stopped) {
        return ExitStatus::stopped;
    }
    return missing ? ExitStatus::failed : status_of(ending, options.run, tally);
}

ExitStatus read(const FrameKind &kind, const Options &options)
{
    std::optional<uint32_t> wanted = options.run.wanted();
    const auto time = options.run.time();
    options.format.checked();
    if (!wanted && !time) {
        wanted = 1;
    }
    const bool several = !wanted || *wanted > 1;
    RecordTally tally;
    Destination destination(options.format.file, options.format.old_content(),
                            beginning_of_frames(kind, options.format, several));
    Device device(options.device);
    destination.begin();
    LiveLine line(kind.name, tally, &destination, FRAMES);
    Run run(time, [&](Run::Time now) {
        line.tick(now);
        if (destination.failed()) {
            run.finish();
        }
    });
    RecordStream stream({kind.name, wanted, options.run.keep_going, {}}, run, tally);
    Frames frames(kind, options.format, several, destination, tally);
    const auto once = [&] { return read_frames(frames, stream, run, tally); };
    const Ending ending = repeat({device, stream, once}, run, tally);
    destination.flush();
    if (reader_has_left()) {
        return status_of_failed_output();
    }
    const bool missing = wanted && tally.records < *wanted;
    const ExitStatus status = judge(options, tally, missing, ending);
    if (!tally.is_flawless() || ending != Ending::done || missing || destination.failed()) {
        sum_up(summary_of(kind, tally, wanted, device), status);
    }
    destination.finish();
    if (output_failed()) {
        return status_of_failed_output(); // finish_output reports why
    }
    return status;
}

} // namespace

Action declare_frames(CLI::App &command, const FrameKind &kind)
{
    auto options = std::make_shared<Options>();
    add_run_limits(command, options->run, "number of frames; 1 if --duration is not given");
    add_format_options(command, options->format, {"text", "csv", "hex", "jsonl"});
    add_keep_going(command, options->run);
    add_device_options(command, options->device);
    add_detail(command);
    return [options, &kind] { return read(kind, *options); };
}

} // namespace stmctl
