// Shows the progress of a run whose results are not visible.
#include "stmctl/stream/live_line.hpp"

#include "stmctl/output/live_fields.hpp"
#include "stmctl/output/output.hpp"

#include <fmt/format.h>

#include <climits>
#include <utility>
#include <vector>

namespace stmctl
{

namespace
{

constexpr std::chrono::milliseconds ON_TERMINAL(250);
constexpr std::chrono::minutes ELSEWHERE(1);

bool is_wanted(bool on_terminal, const Destination *destination)
{
    if (!on_terminal) {
        return detail() == Detail::verbose;
    }
    return detail() != Detail::quiet && (destination == nullptr || destination->is_out_of_sight());
}

} // namespace

LiveLine::LiveLine(std::string name, const RecordTally &tally, const Destination *destination,
                   const Counted &counted)
    : name_(std::move(name)), tally_(tally), destination_(destination), counted_(counted),
      on_terminal_(is_on_terminal(Screen::errors)), wanted_(is_wanted(on_terminal_, destination)),
      pace_(on_terminal_ ? ON_TERMINAL : ELSEWHERE, std::chrono::steady_clock::now())
{
}

LiveLine::~LiveLine()
{
    remove_live_line();
}

void LiveLine::show(Pace::Time now)
{
    if (on_terminal_) {
        show_live_line(Screen::errors, line(now, width_of(Screen::errors)));
    } else {
        say_more(fmt::format("{}: {}", name_, line(now, INT_MAX)));
    }
}

std::string LiveLine::line(Pace::Time now, int columns)
{
    std::vector<LiveField> fields;
    fields.push_back({5, pace_.elapsed(now)});
    fields.push_back({4, fmt::format("{} {}", tally_.records, counted_.words),
                      fmt::format("{} {}", tally_.records, counted_.brief)});
    fields.push_back({2, pace_.take(tally_.records, now)});
    if (tally_.visible) {
        fields.push_back({1, fmt::format("lost {}", tally_.lost)});
    }
    if (tally_.silences > 0) {
        const double silent = std::chrono::duration<double>(tally_.silent).count();
        fields.push_back({3, fmt::format("silent {:.1f} s", silent)});
    }
    if (const auto size = destination_ == nullptr ? std::nullopt : destination_->size()) {
        fields.push_back({6, size_words(*size)});
    }
    return fitted_line(fields, columns);
}

} // namespace stmctl
