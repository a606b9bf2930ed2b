// Shows the state of a stream of records.
#include "stmctl/records/stream_watch.hpp"

#include "stmctl/output/live_fields.hpp"
#include "stmctl/output/output.hpp"

#include <fmt/format.h>

#include <climits>

namespace stmctl
{

namespace
{

constexpr std::chrono::milliseconds ON_TERMINAL(250);
constexpr std::chrono::milliseconds ELSEWHERE(1000);

} // namespace

StreamWatch::StreamWatch(RecordTally &tally)
    : tally_(tally), on_terminal_(is_on_terminal(Screen::output)),
      pace_(on_terminal_ ? ON_TERMINAL : ELSEWHERE, std::chrono::steady_clock::now())
{
}

void StreamWatch::tick(Time now)
{
    show_events();
    if (pace_.is_due(now)) {
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
        show_event(fmt::format("lost: {} before rel_t {}",
                               counted(tally_.lost - seen_.lost, "record", "records"), rel_t));
    }
    if (tally_.backward > seen_.backward) {
        show_event(fmt::format("step back: rel_t is {}", rel_t));
    }
    if (tally_.rejected > seen_.rejected) {
        show_event(fmt::format("rejected: wrong checksum after rel_t {}", rel_t));
    }
    const bool overflow = tally_.overflowing > seen_.overflowing;
    if (overflow != overflow_) {
        overflow_ = overflow;
        show_event(overflow ? fmt::format("overflow: up to {} records waiting at rel_t {}",
                                          tally_.fullest, rel_t)
                            : fmt::format("overflow over at rel_t {}", rel_t));
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
    if (on_terminal_) {
        show_live_line(Screen::output, line(now, width_of(Screen::output)));
    } else {
        print(line(now, INT_MAX) + '\n');
        flush_output();
    }
    tally_.fullest = 0;
}

std::string StreamWatch::line(Time now, int columns)
{
    const LiveField fields[] = {
        {5, pace_.elapsed(now)},
        {4, fmt::format("{} records", tally_.records), fmt::format("{} rec", tally_.records)},
        {2, pace_.take(tally_.records, now)},
        {1, fmt::format("lost {}", tally_.lost)},
        {3, fmt::format("rejected {}", tally_.rejected), fmt::format("rej {}", tally_.rejected)},
        {6, fmt::format("overflowing {}", tally_.overflowing),
         fmt::format("over {}", tally_.overflowing)},
        {7, fmt::format("fill {} of 255", tally_.fullest), fmt::format("fill {}", tally_.fullest)},
    };
    return fitted_line(fields, columns);
}

void StreamWatch::finish()
{
    show_events();
    leave_live_line();
}

} // namespace stmctl
