// Runs an operation again and again until nothing more is wanted.
#include "stmctl/stream/repetition.hpp"

#include "stmctl/output/output.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

constexpr std::chrono::milliseconds BEFORE_NEXT(500);

// Its failure shows in the next attempt.
void synchronise()
{
    perform([](StmPollFn, StmOutputFn) {
        stm_sync_transfer();
        return 0;
    });
}

std::string reason_of(const Outcome &outcome)
{
    return outcome.failures.empty() ? "not everything came" : outcome.failures.front().sentence();
}

} // namespace

Ending repeat(const Repetition &repetition, Run &run, RecordTally &tally)
{
    bool said = false;
    for (;;) {
        const uint64_t before = tally.records;
        const Outcome outcome = repetition.once();
        tally.failures += outcome.failures.size();
        if (outcome.stopped) {
            return Ending::stopped;
        }
        if (run.over()) {
            return run.given_up() ? Ending::failed : Ending::done;
        }
        said = said && tally.records == before;
        if (!repetition.keep_going && outcome.failures.empty()) {
            return Ending::failed; // the summary tells what is missing
        }
        if (!said) {
            say(fmt::format("{}: {}{}", repetition.name, reason_of(outcome),
                            repetition.keep_going ? "; trying again" : ""));
            said = true;
        }
        if (!repetition.keep_going) {
            return Ending::failed;
        }
        if (!wait_unless_stopped(BEFORE_NEXT)) {
            return Ending::stopped;
        }
        if (run.over()) {
            return Ending::done;
        }
        synchronise();
    }
}

ExitStatus status_of(Ending ending, const RunOptions &options, const RecordTally &tally)
{
    switch (ending) {
    case Ending::done:
        return tally.records > 0 ? ExitStatus::done : ExitStatus::failed;
    case Ending::stopped:
        return options.count.empty() && options.duration.empty() ? ExitStatus::done
                                                                 : ExitStatus::stopped;
    default:
        return ExitStatus::failed;
    }
}

} // namespace stmctl
