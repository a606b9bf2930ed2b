// ring read: the records that another process writes into the ring.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"
#include "stmctl/record/record_writer.hpp"
#include "stmctl/record/ring_slot.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/ring/slot_follower.hpp"
#include "stmctl/stream/record_stream.hpp"
#include "stmctl/stream/repetition.hpp"

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
    bool from_now = false; // as without it
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

// Says that nothing comes any more, and that it comes again.
class Silence
{
  public:
    explicit Silence(const Segment &segment) : segment_(segment) {}

    void end()
    {
        last_ = steady_clock::now();
        if (said_) {
            said_ = false;
            say("ring read: records come again");
        }
    }

    void go_on()
    {
        constexpr std::chrono::seconds PATIENCE(2);
        if (steady_clock::now() - last_ < PATIENCE) {
            return;
        }
        last_ = steady_clock::now();
        const std::optional<Segment> segment = find_segment();
        if (!segment || segment->id != segment_.id) {
            throw Failure(ExitStatus::not_there, "the ring was removed");
        }
        if (!said_) {
            said_ = true;
            const bool alone = attached_processes(*segment).size() < 2;
            say(alone ? "ring read: no writer is there; waiting for one"
                      : "ring read: nothing new from the writer; waiting for it");
        }
    }

  private:
    Segment segment_;
    steady_clock::time_point last_ = steady_clock::now();
    bool said_ = false;
};

class RingReadout
{
  public:
    RingReadout(const Options &options, Destination &destination)
        : wanted_(options.run.wanted()),
          writer_(options.format.checked(), options.format.timestamps, columns_of(RecordKind::temp),
                  destination)
    {
        writer_.begin();
    }

    void take(const SlotFollower::Look &look, Run &run)
    {
        if (look.restarted) {
            ++restarts_;
            say("ring read: the writer has begun anew");
            first_of_writer_ = true;
        }
        const uint64_t lost = tally_.lost;
        for (const RingRecord &slot : look.records) {
            take(slot, run);
        }
        if (look.overrun) {
            ++overruns_;
            say(fmt::format("ring read: overrun: the writer was faster, {} records are lost",
                            tally_.lost - lost));
        }
    }

    void say_summary() const
    {
        say(fmt::format("ring read: {}, {}, {} of the writer", tally_.summary(wanted_),
                        counted(overruns_, "overrun", "overruns"),
                        counted(restarts_, "restart", "restarts")));
    }

    ExitStatus status(bool stopped, const RunOptions &options) const
    {
        const bool missing = wanted_ && tally_.records < *wanted_;
        const bool failed = !stopped && (missing || tally_.rejected > 0);
        return failed ? ExitStatus::failed
                      : status_of(stopped ? Ending::stopped : Ending::done, options, tally_);
    }

  private:
    // The board may have begun anew with the writer: that is no step back.
    void forget_future(const Record &record)
    {
        const uint32_t step = record.rel_t() - tally_.last.rel_t;
        if (static_cast<int32_t>(step) <= 0) {
            tally_.last = {};
        }
    }

    void take(const RingRecord &slot, Run &run)
    {
        if (wanted_ && tally_.records >= *wanted_) {
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
        if (wanted_ && tally_.records >= *wanted_) {
            run.finish();
        }
    }

    std::optional<uint32_t> wanted_;
    RecordWriter writer_;
    RecordTally tally_;
    bool first_of_writer_ = false; // comes next
    uint64_t overruns_ = 0;
    uint64_t restarts_ = 0;
};

// Returns whether the user has stopped it.
bool read_until_over(RingReadout &readout, const Options &options, const Segment &segment, Run &run)
{
    const RingView view(segment.id);
    SlotFollower reader(view);
    Silence silence(segment);
    if (options.from_oldest) {
        readout.take(reader.everything(), run);
    }
    while (!run.over() && !output_failed()) {
        const SlotFollower::Look look = reader.look();
        readout.take(look, run);
        constexpr std::chrono::milliseconds NO_TIME(0);
        constexpr std::chrono::milliseconds MOMENT(1);
        if (look.records.empty()) {
            silence.go_on();
        } else {
            silence.end();
        }
        if (!wait_unless_stopped(look.records.empty() ? MOMENT : NO_TIME)) {
            return true;
        }
    }
    return false;
}

ExitStatus read(const Options &options)
{
    const auto time = options.run.time();
    options.run.wanted();
    options.format.checked();
    if (options.from_now && options.from_oldest) {
        throw Failure(ExitStatus::usage, "--from-now and --from-oldest exclude each other");
    }
    Destination destination(options.format.file);
    const Segment segment = existing_segment();
    attach_ring();
    const ReaderSide side;
    destination.begin();
    RingReadout readout(options, destination);
    RegularFlush flush(destination);
    Run run(time, std::ref(flush));
    const bool stopped = read_until_over(readout, options, segment, run);
    destination.finish();
    if (output_failed()) {
        return status_of_failed_output(); // the end of every run tells why
    }
    readout.say_summary();
    return readout.status(stopped, options.run);
}

} // namespace

Action declare_ring_read(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_run_limits(command, options->run, "end after so many");
    add_format_options(command, options->format, {"text", "csv", "jsonl"});
    add_flag(command, "--from-now", options->from_now, "begin with the next record (the default)");
    add_flag(command, "--from-oldest", options->from_oldest, "begin with the oldest that is there");
    return [options] { return read(*options); };
}

} // namespace stmctl
