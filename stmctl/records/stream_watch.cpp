// Shows how a stream of records goes.
#include "stmctl/records/stream_watch.hpp"

#include "stmctl/output/output.hpp"
#include "stmctl/output/terminal.hpp"

#include <fmt/format.h>

#include <unistd.h>

namespace stmctl
{

using std::chrono::steady_clock;

namespace
{

double seconds(steady_clock::duration time)
{
    return std::chrono::duration<double>(time).count();
}

} // namespace

StreamWatch::StreamWatch(RecordTally &tally)
    : tally_(tally), on_terminal_(is_terminal(STDOUT_FILENO)), start_(steady_clock::now()),
      last_line_(start_)
{
}

void StreamWatch::tick(Time now)
{
    constexpr std::chrono::milliseconds ON_TERMINAL(250);
    constexpr std::chrono::milliseconds ELSEWHERE(1000);
    show_events();
    if (now - last_line_ >= (on_terminal_ ? ON_TERMINAL : ELSEWHERE)) {
        show_line(now);
    }
}

void StreamWatch::show_events()
{
    if (tally_.records == seen_.records && tally_.rejected == seen_.rejected) {
        return;
    }
    const uint32_t rel_t = tally_.last.rel_t;
    if (tally_.lost > seen_.lost) {
        show_event(fmt::format("lost: {}, until rel_t {}",
                               counted(tally_.lost - seen_.lost, "record", "records"), rel_t));
    }
    if (tally_.backward > seen_.backward) {
        show_event(fmt::format("step back: rel_t is {}", rel_t));
    }
    if (tally_.rejected > seen_.rejected) {
        show_event(fmt::format("rejected: wrong checksum behind rel_t {}", rel_t));
    }
    const bool overflow = tally_.overflowing > seen_.overflowing;
    if (overflow != overflow_) {
        overflow_ = overflow;
        show_event(overflow ? fmt::format("overflow: up to {} records wait at rel_t {}",
                                          tally_.fullest, rel_t)
                            : fmt::format("overflow over: rel_t is {}", rel_t));
    }
    seen_ = tally_;
}

void StreamWatch::show_event(const std::string &event) const
{
    if (!on_terminal_) {
        print(event + '\n');
        flush_output();
    }
}

void StreamWatch::show_line(Time now)
{
    const double rate =
        static_cast<double>(tally_.records - shown_.records) / seconds(now - last_line_);
    const std::string line = fmt::format(
        "{}  {} records  {:.0f}/s  lost {}  rejected {}  overflowing {}  fill {} of 255",
        clock_words(seconds(now - start_)), tally_.records, rate, tally_.lost, tally_.rejected,
        tally_.overflowing, tally_.fullest);
    if (on_terminal_) {
        show_live_line(line);
    } else {
        print(line + '\n');
        flush_output();
    }
    last_line_ = now;
    shown_ = tally_;
    tally_.fullest = 0;
}

void StreamWatch::finish()
{
    show_events();
    leave_live_line();
    if (!reader_has_left()) {
        say(fmt::format("watch: {}", tally_.summary({})));
    }
}

} // namespace stmctl
