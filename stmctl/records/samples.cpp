// adc and raw: frames of converter values, and bytes that only the firmware understands.
#include "stmctl/command_line/command.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/process/output.hpp"
#include "stmctl/records/csv_line.hpp"
#include "stmctl/records/record_writer.hpp"
#include "stmctl/records/repetition.hpp"

#include <fmt/format.h>

#include <charconv>
#include <memory>

namespace
{

struct Options {
    RunOptions run;
    FormatOptions format;
    DeviceOptions device;
};

// What a frame's text becomes in CSV and jsonl; the first frame's has the header.
using Render = std::string (*)(const std::string &text, const FormatOptions &options, bool first);

struct Kind {
    const char *name;
    void (*read)(int mode, StmPollFn poll, StmOutputFn output);
    Render render;
    bool has_header; // in CSV, shown before anything has come
};

// "-805;" in a line each
std::string render_values(const std::string &text, const FormatOptions &options, bool first)
{
    const bool csv = options.format == "csv";
    const std::string time = options.timestamps ? host_time() : "";
    std::string result;
    if (csv && first) {
        result = options.timestamps ? csv_header({"time", "value"}) : csv_header({"value"});
    }
    std::string_view rest = text;
    for (size_t end = 0; (end = rest.find(";\n")) != std::string_view::npos;) {
        const std::string_view value = rest.substr(0, end);
        const std::string before =
            time.empty() ? ""
                         : fmt::format("{}{}{}", csv ? "" : "\"time\":", time, csv ? ';' : ',');
        result += csv ? fmt::format("{}{};\n", before, value)
                      : fmt::format("{{{}\"value\":{}}}\n", before, value);
        rest.remove_prefix(end + 2);
    }
    return result;
}

// "0.Byte";0x55;"1.Byte";0x01;...
std::string render_bytes(const std::string &text, const FormatOptions &options, bool)
{
    const std::string time = options.timestamps ? host_time() : "";
    if (options.format == "csv") {
        return (time.empty() ? "" : fmt::format("\"time\";{};", time)) + text;
    }
    std::string line = time.empty() ? "{" : fmt::format("{{\"time\":{}", time);
    const std::vector<std::string_view> fields = csv_fields(text);
    for (size_t i = 0; i + 1 < fields.size(); i += 2) {
        const std::string_view digits = fields[i + 1].substr(2);
        int byte = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
        line += fmt::format("{}\"{}\":{}", line.size() > 1 ? "," : "", fields[i], byte);
    }
    return line + "}\n";
}

constexpr Kind ADC = {"adc", stm_read_adc_samples, render_values, true};
constexpr Kind RAW = {"raw", stm_read_raw_bytes, render_bytes, false};

class Frames
{
  public:
    Frames(const Kind &kind, const FormatOptions &options, Destination &destination)
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
    const Kind &kind_;
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

void say_summary(const Kind &kind, const RecordTally &tally, std::optional<uint32_t> wanted)
{
    const std::string of = wanted ? fmt::format("{} of ", tally.records) : "";
    say(fmt::format(
        "{}: {}{}, {} rejected, {} not ready in time, {}{}", kind.name, of,
        counted(wanted ? *wanted : tally.records, "frame", "frames"), tally.rejected,
        tally.timeouts, counted(tally.failures, "failing exchange", "failing exchanges"),
        tally.records == 0 && tally.timeouts > 0 ? "; does the application run? See stmctl state"
                                                 : ""));
}

ExitStatus read(const Kind &kind, const Options &options)
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

Action declare(CLI::App &command, const Kind &kind)
{
    auto options = std::make_shared<Options>();
    add_run_limits(command, options->run, "how many frames; 1 if --duration is not given either");
    add_format_options(command, options->format, {"text", "csv", "hex", "jsonl"});
    add_keep_going(command, options->run);
    add_device_options(command, options->device);
    return [options, &kind] { return read(kind, *options); };
}

} // namespace

Action declare_adc(CLI::App &command)
{
    return declare(command, ADC);
}

Action declare_raw(CLI::App &command)
{
    return declare(command, RAW);
}
