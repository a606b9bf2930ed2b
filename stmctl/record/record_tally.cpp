// The counts of a stream of records.
#include "stmctl/record/record_tally.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace stmctl
{

namespace
{

// Above it the co-processor's buffer is about to overflow; the module uses the same number.
constexpr uint32_t MOST_BUFFERED = 190;

std::string part(uint64_t number, const char *one, const char *several)
{
    return number == 0 ? "" : ", " + counted(number, one, several);
}

double seconds(std::chrono::milliseconds time)
{
    return std::chrono::duration<double>(time).count();
}

std::string silence_words(uint64_t silences, std::chrono::milliseconds silent)
{
    switch (silences) {
    case 0:
        return "";
    case 1:
        return fmt::format(", silent for {:.1f} s", seconds(silent));
    default:
        return fmt::format(", silent {} times, for {:.1f} s in all", silences, seconds(silent));
    }
}

} // namespace

bool is_overflow(const RecordFacts &facts)
{
    return facts.known && facts.buffered > MOST_BUFFERED;
}

uint32_t RecordTally::take(const RecordFacts &facts)
{
    ++records;
    visible = visible && facts.known;
    uint32_t missing = 0;
    if (facts.known && last.known) {
        const uint32_t step = facts.rel_t - last.rel_t; // rel_t wraps around
        const bool rises = static_cast<int32_t>(step) > 0;
        backward += rises ? 0 : 1;
        missing = rises ? step - 1 : 0;
    }
    lost += missing;
    fullest = std::max(fullest, facts.buffered);
    overflowing += is_overflow(facts) ? 1 : 0;
    last = facts;
    return missing;
}

void RecordTally::take_silence(std::chrono::milliseconds duration)
{
    ++silences;
    silent += duration;
}

bool RecordTally::has_holes() const
{
    return lost + rejected + overflowing + backward + silences > 0;
}

bool RecordTally::is_flawless() const
{
    return !has_holes() && timeouts + failures == 0;
}

std::string RecordTally::summary(std::optional<uint32_t> wanted) const
{
    const std::string of = wanted ? fmt::format("{} of ", records) : "";
    const std::string silence = silence_words(silences, silent);
    const std::string seen =
        visible ? fmt::format("{} lost, {} rejected, {} overflowing{}", lost, rejected, overflowing,
                              silence)
                : fmt::format("{} rejected{}; hex does not show losses", rejected, silence);
    return fmt::format("{}{}, {}{}{}{}", of,
                       counted(wanted ? *wanted : records, "record", "records"), seen,
                       part(backward, "step back in rel_t", "steps back in rel_t"),
                       part(timeouts, "time-out", "time-outs"),
                       part(failures, "failing exchange", "failing exchanges"));
}

std::string RecordTally::json(std::optional<uint32_t> wanted) const
{
    const auto or_null = [](bool there, uint64_t number) {
        return there ? fmt::format("{}", number) : std::string("null");
    };
    return fmt::format("{{\"records\":{},\"wanted\":{},\"lost\":{},\"rejected\":{},"
                       "\"overflowing\":{},\"steps_back\":{},\"timeouts\":{},"
                       "\"failing_exchanges\":{},\"silences\":{},\"silent_seconds\":{:.3f}}}",
                       records, or_null(wanted.has_value(), wanted.value_or(0)),
                       or_null(visible, lost), rejected, or_null(visible, overflowing), backward,
                       timeouts, failures, silences, seconds(silent));
}

} // namespace stmctl
