// ring read: shows the records that another process writes to the ring.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"
#include "stmctl/record/record_writer.hpp"
#include "stmctl/record/ring_slot.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/ring/slot_follower.hpp"
#include "stmctl/stream/live_line.hpp"
#include "stmctl/stream/record_stream.hpp"
#include "stmctl/stream/verdict.hpp"

#include <fmt/format.h>

#include <memory>

namespace stmctl
{

using std::chrono::steady_clock;

namespace
{

struct Options {
    RunOptions run;
    FormatOptions format;
    bool from_now = false; // the default
    bool from_oldest = false;
};

// The reader's side of the ring.
class ReaderSide
{
  public:
    ReaderSide() : handle_(RingBuffer_Open("r"))
    {
        if (handle_ < 1) {
            throw Failure(ExitStatus::failed,
                          "the ring is marked as being read (reader_open is 1); stmctl ring "
                          "remove makes way for a new one");
        }
    }
    ~ReaderSide() { RingBuffer_Close(handle_); }
    ReaderSide(const ReaderSide &) = delete;
    ReaderSide &operator=(const ReaderSide &) = delete;

  private:
    int handle_;
};

// Reports that no more records come, and when they come again.
class WriterWatch
{
  public:
    WriterWatch(const Segment &segment, const RingView &view) : segment_(segment), view_(view) {}

    void records_come()
    {
        last_look_ = steady_clock::now();
        if (said_) {
            said_ = false;
            say("ring read: records are coming again");
        }
    }

    void nothing_comes()
    {
        constexpr std::chrono::seconds PATIENCE(2);
        if (steady_clock::now() - last_look_ < PATIENCE) {
            return;
        }
        last_look_ = steady_clock::now();
        if (!said_) {
            said_ = true;
            say(is_alone() ? "ring read: there is no writer; waiting for one"
                           : "ring read: nothing new from the writer; waiting for it");
        } else {
            current_segment();
        }
    }

    // Whether it is normal that nothing comes. How writers other than stmctl ended is not known.
    bool has_ended_well() const
    {
        const WriterMark mark = view_.writer_mark();
        return mark == WriterMark::ended || (mark == WriterMark::unknown && is_alone());
    }

    const char *cause() const
    {
        return is_alone() ? "its writer was killed" : "its writer is running but writes nothing";
    }

    // The same, if there may never have been a writer.
    const char *state() const
    {
        const WriterMark mark = view_.writer_mark();
        if (!is_alone() || mark == WriterMark::writing) {
            return cause();
        }
        return mark == WriterMark::ended ? "its writer has ended" : "there is no writer";
    }

  private:
    Segment current_segment() const
    {
        const std::optional<Segment> segment = find_segment();
        if (!segment || segment->id != segment_.id) {
            throw Failure(ExitStatus::not_there, "the ring was removed");
        }
        return *segment;
    }

    bool is_alone() const { return attached_processes(current_segment()).size() < 2; }

    Segment segment_;
    const RingView &view_;
    steady_clock::time_point last_look_ = steady_clock::now();
    bool said_ = false;
};

class RingReadout
{
  public:
    RingReadout(const Options &options, Destination &destination, RecordTally &tally)
        : wanted_(options.run.wanted()),
          writer_(options.format.checked(), options.format.timestamps, columns_of(RecordKind::temp),
                  destination, options.format.csv_form()),
          tally_(tally)
    {
        writer_.begin();
    }

    void take(const SlotFollower::Look &look)
    {
        if (look.restarted) {
            ++restarts_;
            say("ring read: the writer has restarted");
            first_of_writer_ = true;
        }
        const uint64_t lost = tally_.lost;
        for (const RingRecord &slot : look.records) {
            take(slot);
        }
        if (look.overrun) {
            ++overruns_;
            say(fmt::format("ring read: overrun: the writer was faster, {} lost",
                            counted(tally_.lost - lost, "record", "records")));
        }
    }

    bool is_complete() const { return wanted_ && tally_.records >= *wanted_; }

    std::string summary() const
    {
        return fmt::format("ring read: {}, {}, {} of the writer", tally_.summary(wanted_),
                           counted(overruns_, "overrun", "overruns"),
                           counted(restarts_, "restart", "restarts"));
    }

    ExitStatus status(Ending ending, const RunOptions &options) const
    {
        const bool missing = wanted_ && tally_.records < *wanted_;
        const bool failed = ending == Ending::done && (missing || tally_.rejected > 0);
        return failed ? ExitStatus::failed : status_of(ending, options, tally_);
    }

  private:
    // The board may have restarted with the writer: that is not a step back.
    void forget_future(const Record &record)
    {
        const uint32_t step = record.rel_t() - tally_.last.rel_t;
        if (static_cast<int32_t>(step) <= 0) {
            tally_.last = {};
        }
    }

    void take(const RingRecord &slot)
    {
        if (is_complete()) {
            return;
        }
        if (!is_whole(slot)) {
            tally_.take_rejected();
            return;
        }
        const Record record = record_of_slot(slot);
        if (first_of_writer_) {
            first_of_writer_ = false;
            forget_future(record);
        }
        writer_.take(record);
        tally_.take(record.facts());
    }

    std::optional<uint32_t> wanted_;
    RecordWriter writer_;
    RecordTally &tally_;
    bool first_of_writer_ = false; // comes next
    uint64_t overruns_ = 0;
    uint64_t restarts_ = 0;
};

class RingReading
{
  public:
    RingReading(const Options &options, const Segment &segment, RingReadout &readout,
                RecordTally &tally)
        : view_(segment.id), reader_(view_), watch_(segment, view_), readout_(readout),
          tally_(tally), silence_(options.run.silence_given(), DEFAULT_SILENCE, steady_clock::now())
    {
        if (options.from_oldest) {
            readout.take(reader_.everything());
        }
    }

    // Why nothing came, as the end of a sentence.
    const std::string &reason() const { return reason_; }

    Ending read_until_over(Run &run)
    {
        constexpr std::chrono::milliseconds MOMENT(1);
        while (!is_over(run)) {
            const bool some_came = look();
            if (!wait_unless_stopped(some_came ? std::chrono::milliseconds(0) : MOMENT)) {
                return end(Ending::stopped);
            }
        }
        return end(Ending::done);
    }

  private:
    static constexpr Silence::Duration DEFAULT_SILENCE{10'000};

    bool look()
    {
        const SlotFollower::Look look = reader_.look();
        readout_.take(look); // a restart may come without records
        if (look.records.empty()) {
            silence_.disturb();
            watch_.nothing_comes();
            return false;
        }
        watch_.records_come();
        if (const auto length = silence_.came(look.records.size(), steady_clock::now())) {
            tally_.take_silence(*length);
        }
        return true;
    }

    // If nothing came in a limited time, that needs an explanation.
    std::string reason_of_nothing() const
    {
        return tally_.records + tally_.rejected > 0 ? "" : fmt::format("; {}", watch_.state());
    }

    bool is_over(Run &run) const { return readout_.is_complete() || run.over() || output_failed(); }

    Ending end(Ending ending)
    {
        const auto now = steady_clock::now();
        if (!silence_.is_silence(now) || watch_.has_ended_well()) {
            reason_ = ending == Ending::done ? reason_of_nothing() : "";
            return ending;
        }
        tally_.take_silence(silence_.lasting(now));
        say(fmt::format("ring read: nothing came in the last {}; {}",
                        seconds_words(silence_.lasting(now)), watch_.cause()));
        return ending == Ending::stopped ? Ending::stopped_in_silence : Ending::failed;
    }

    RingView view_;
    SlotFollower reader_;
    WriterWatch watch_;
    RingReadout &readout_;
    RecordTally &tally_;
    Silence silence_;
    std::string reason_;
};

ExitStatus read(const Options &options)
{
    const auto time = options.run.time();
    options.run.wanted();
    options.run.silence_given();
    const Format format = options.format.checked();
    if (options.from_now && options.from_oldest) {
        throw Failure(ExitStatus::usage, "--from-now and --from-oldest cannot be combined");
    }
    RecordTally tally;
    Destination destination(options.format.file, options.format.old_content(),
                            beginning_of_records(format, options.format.timestamps,
                                                 columns_of(RecordKind::temp),
                                                 options.format.csv_form()));
    SummaryFile summary(options.run.summary, tally, options.run.wanted(), &destination);
    const Segment segment = existing_segment();
    attach_ring();
    const ReaderSide side;
    destination.begin();
    summary.begin();
    RingReadout readout(options, destination, tally);
    RingReading reading(options, segment, readout, tally);
    RegularFlush flush(destination);
    LiveLine line("ring read", tally, &destination);
    Run run(time, [&](Run::Time now) {
        flush(now);
        line.tick(now);
        if (destination.failed()) {
            run.finish();
        }
    });
    const Ending ending = reading.read_until_over(run);
    destination.flush();
    if (reader_has_left()) {
        return status_of_failed_output();
    }
    const ExitStatus status = readout.status(ending, options.run);
    sum_up(readout.summary() + reading.reason(), status);
    destination.finish();
    summary.finish();
    if (output_failed()) {
        return status_of_failed_output(); // finish_output reports why
    }
    return status;
}

} // namespace

Action declare_ring_read(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_run_limits(command, options->run, "stop after this many records");
    add_format_options(command, options->format, {"text", "csv", "jsonl"});
    add_judgement(command, options->run, "shortest silence (10 s)");
    add_flag(command, "--from-now", options->from_now, "start with the next record (the default)");
    add_flag(command, "--from-oldest", options->from_oldest,
             "start with the writer's oldest in the ring");
    add_detail(command);
    return [options] { return read(*options); };
}

} // namespace stmctl
