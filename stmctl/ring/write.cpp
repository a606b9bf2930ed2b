// ring write: writes the co-processor's stream of records to the ring.
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/record/ring_slot.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/ring/segment.hpp"
#include "stmctl/stream/live_line.hpp"
#include "stmctl/stream/repetition.hpp"
#include "stmctl/stream/verdict.hpp"

#include <chrono>
#include <memory>
#include <optional>

namespace stmctl
{

namespace
{

struct Options {
    RunOptions run;
    DeviceOptions device;
};

// Counts what goes into the ring: at most 85 records between two looks.
class PutCounter
{
  public:
    PutCounter(const RingView &view, RecordStream &stream) : view_(view), stream_(stream) {}

    void begin() { index_ = 0; } // where every writer begins

    void count()
    {
        const int32_t index = view_.write_index();
        if (index < 0 || index >= RINGBUFFER_SLOTS) {
            return; // the next put reports it
        }
        for (; index_ != index; index_ = (index_ + 1) % RINGBUFFER_SLOTS) {
            stream_.take(record_of_slot(view_.slot(index_)).facts());
        }
    }

  private:
    const RingView &view_;
    RecordStream &stream_;
    int32_t index_ = 0;
};

void take_report(RecordStream &stream, std::string_view text)
{
    switch (hear(text).event) {
    case Event::ring_refused:
        throw Failure(ExitStatus::failed, "the ring is marked as being written (writer_open is 1); "
                                          "stmctl ring remove makes way for a new one");
    case Event::slot_refused:
        throw Failure(ExitStatus::failed,
                      "the ring is damaged; see stmctl ring status and stmctl ring remove");
    default:
        stream.take_report(text);
    }
}

// After a removal only the writer would still have the ring, and readers would wait for it.
class RemovalCheck
{
  public:
    explicit RemovalCheck(int id) : id_(id) {}

    void operator()(std::chrono::steady_clock::time_point now)
    {
        constexpr std::chrono::seconds INTERVAL(1);
        if (now < next_) {
            return;
        }
        next_ = now + INTERVAL;
        const std::optional<Segment> segment = find_segment();
        if (!segment || segment->id != id_) {
            throw Failure(ExitStatus::not_there, "the ring was removed");
        }
    }

  private:
    int id_;
    std::chrono::steady_clock::time_point next_;
};

Outcome acquire(PutCounter &counter, RecordStream &stream, Run &run)
{
    counter.begin();
    return perform(
        [](StmPollFn poll, StmOutputFn output) {
            stm_ringbuffer_acquire(poll, output);
            return 0;
        },
        [&](const char *text, int) { take_report(stream, text); }, [&run] { return run.ask(); });
}

// Everything that works on the stream while it runs.
Ending write_stream(Device &device, int id, const Options &options, RecordTally &tally)
{
    const RingView view(id);
    leave_mark(id, WriterMark::writing);
    RemovalCheck check_removal(id);
    LiveLine line("ring write", tally, nullptr);
    std::function<void(Run::Time)> look;
    Run run(options.run.time(), [&](Run::Time now) { look(now); });
    RecordStream stream({"ring write", {}, true, options.run.silence_given()}, run, tally);
    PutCounter counter(view, stream);
    look = [&](Run::Time now) {
        counter.count();
        stream.look(now);
        line.tick(now);
        check_removal(now);
    };
    const auto once = [&] { return acquire(counter, stream, run); };
    const Ending ending = repeat({device, stream, once}, run, tally);
    leave_mark(id, WriterMark::ended);
    return ending;
}

ExitStatus write(const Options &options)
{
    options.run.time();
    options.run.silence_given();
    RecordTally tally;
    SummaryFile summary(options.run.summary, tally, {});
    if (find_segment()) {
        attach_ring(); // so that its faults are reported before the device is opened
    }
    Device device(options.device);
    attach_ring();
    summary.begin();
    const Ending ending = write_stream(device, existing_segment().id, options, tally);
    summary.finish();
    const ExitStatus status = status_of(ending, options.run, tally);
    sum_up("ring write: " + tally.summary({}), status);
    return status;
}

} // namespace

Action declare_ring_write(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_duration(command, options->run);
    add_judgement(command, options->run, "shortest silence (2 s)");
    add_device_options(command, options->device);
    add_detail(command);
    return [options] { return write(*options); };
}

} // namespace stmctl
