// ring write: the co-processor's stream of records goes into the ring.
#include "stmctl/module/device.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/output/terminal.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/ring/segment.hpp"
#include "stmctl/stream/repetition.hpp"

#include <fmt/format.h>

#include <unistd.h>

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

// Counts what goes into the ring: at most 85 records do between two looks.
class PutCounter
{
  public:
    PutCounter(const RingView &view, RecordTally &tally) : view_(view), tally_(tally) {}

    void begin() { index_ = 0; } // as every writer does

    void count()
    {
        const int32_t index = view_.write_index();
        if (index < 0 || index >= RINGBUFFER_SLOTS) {
            return; // the next put tells of it
        }
        const int32_t put = (index - index_ + RINGBUFFER_SLOTS) % RINGBUFFER_SLOTS;
        tally_.records += static_cast<uint64_t>(put);
        index_ = index;
    }

    void show(std::chrono::steady_clock::time_point now)
    {
        constexpr std::chrono::milliseconds INTERVAL(250);
        if (now - shown_ >= INTERVAL && is_terminal(STDOUT_FILENO)) {
            shown_ = now;
            show_live_line(fmt::format("{} records, {} rejected", tally_.records, tally_.rejected));
        }
    }

  private:
    const RingView &view_;
    RecordTally &tally_;
    int32_t index_ = 0;
    std::chrono::steady_clock::time_point shown_;
};

void take_report(RecordTally &tally, std::string_view text)
{
    constexpr std::string_view REFUSED = "Cannot open ringbuffer for write\n";
    constexpr std::string_view REFUSED_RECORD = "Error: Writing to ringbuffer\n";
    if (text == REFUSED) {
        throw Failure(ExitStatus::failed, "the ring is marked as being written (writer_open is 1); "
                                          "stmctl ring remove makes way for a new one");
    }
    if (text == REFUSED_RECORD) {
        throw Failure(ExitStatus::failed, "the ring is damaged; see stmctl ring status, and stmctl "
                                          "ring remove");
    }
    const uint64_t timeouts = tally.timeouts;
    if (!tally.take_report(text)) {
        say(text.substr(0, text.find('\n')));
    }
    if (timeouts == 0 && tally.timeouts == 1) {
        say("ring write: nothing comes from the co-processor; waiting for it");
    }
}

// Readers would wait for a writer whose ring only it has any more.
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

Outcome acquire(PutCounter &counter, RecordTally &tally)
{
    counter.begin();
    Outcome outcome = perform(
        [](StmPollFn poll, StmOutputFn output) {
            stm_ringbuffer_acquire(poll, output);
            return 0;
        },
        [&](const char *text, int) { take_report(tally, text); }, poll_run);
    counter.count(); // the last block was followed by no poll
    return outcome;
}

ExitStatus write(const Options &options)
{
    const auto time = options.run.time();
    if (find_segment()) {
        attach_ring(); // what is wrong with it is said before the device is opened
    }
    const Device device(options.device);
    attach_ring();
    const int id = existing_segment().id;
    const RingView view(id);
    RemovalCheck check_removal(id);
    RecordTally tally;
    PutCounter counter(view, tally);
    Run run(time, [&](auto now) {
        counter.count();
        counter.show(now);
        check_removal(now);
    });
    const auto once = [&] { return acquire(counter, tally); };
    const Ending ending = repeat({"ring write", true, once}, run, tally);
    leave_live_line();
    say(fmt::format("ring write: {}, {} rejected, {}", counted(tally.records, "record", "records"),
                    tally.rejected,
                    counted(tally.failures, "failing exchange", "failing exchanges")));
    return status_of(ending, options.run, tally);
}

} // namespace

Action declare_ring_write(CLI::App &command)
{
    auto options = std::make_shared<Options>();
    add_duration(command, options->run);
    add_device_options(command, options->device);
    return [options] { return write(*options); };
}

} // namespace stmctl
