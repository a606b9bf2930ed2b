// Repeats an operation until nothing more is wanted.
#include "stmctl/stream/repetition.hpp"

#include "stmctl/module/diagnosis.hpp"
#include "stmctl/module/recovery.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace stmctl
{

namespace
{

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds FIRST_PAUSE(500);
constexpr std::chrono::milliseconds LONGEST_PAUSE(60'000);

// An operation ends by itself when everything has come, or after a failure. Another program that
// talks to the co-processor can make it end without either.
std::string reason_of(const Outcome &outcome, const Device &device)
{
    if (!outcome.failures.empty()) {
        return sentence_of(outcome.failures.front(), device);
    }
    if (outcome.timed_out) {
        return "not everything arrived in time";
    }
    if (outcome.rejected) {
        return "not everything arrived intact";
    }
    return "not everything arrived; " + device.other_users().suspicion();
}

std::string end_in_silence(const RecordStream &stream, Silence::Duration silence)
{
    return fmt::format("{}: nothing came in the last {}", stream.options().name,
                       seconds_words(silence));
}

std::string giving_up(const RecordStream &stream)
{
    const double limit = std::chrono::duration<double>(stream.silence().limit()).count();
    return fmt::format("{}: nothing has come for {:g} {}", stream.options().name, limit,
                       limit == 1 ? "second" : "seconds");
}

// The loop, and what it keeps from one attempt to the next.
class Attempts
{
  public:
    Attempts(const Repetition &repetition, Run &run, RecordTally &tally)
        : repetition_(repetition), run_(run), tally_(tally),
          recovery_(
              repetition.device, [&run](std::chrono::milliseconds time) { return run.pause(time); },
              [&repetition](const std::string &sentence) { repetition.stream.tell(sentence); })
    {
    }

    Ending run()
    {
        for (;;) {
            const uint64_t before = tally_.records;
            run_.begin_operation();
            const Outcome outcome = repetition_.once();
            tally_.failures += outcome.failures.size();
            if (outcome.stopped) {
                return Ending::stopped;
            }
            if (run_.over()) {
                return run_.given_up() ? Ending::failed : Ending::done;
            }
            if (!repetition_.stream.options().keep_going) {
                say_failure(outcome);
                return Ending::failed;
            }
            pause_ = tally_.records > before ? FIRST_PAUSE : pause_;
            if (!recover(outcome)) {
                return stop_requested() ? Ending::stopped : Ending::done;
            }
        }
    }

  private:
    // What was rejected or not ready in time is in the summary.
    void say_failure(const Outcome &outcome) const
    {
        if (!outcome.failures.empty() || (!outcome.timed_out && !outcome.rejected)) {
            say(fmt::format("{}: {}", repetition_.stream.options().name,
                            reason_of(outcome, repetition_.device)));
        }
    }

    void tell_of_asking() const
    {
        if (detail() == Detail::verbose) {
            const RecordStream &stream = repetition_.stream;
            const auto silent = stream.silence().lasting(steady_clock::now());
            say(fmt::format("{}: asking again, {} after the last {}", stream.options().name,
                            seconds_words(silent), tally_.records > 0 ? "data" : "request"));
        }
    }

    // An operation that was cut off has already waited.
    bool recover(const Outcome &outcome)
    {
        RecordStream &stream = repetition_.stream;
        stream.rest();
        if (!outcome.cut_off && !is_device_gone(outcome.failures)) {
            stream.tell(fmt::format("{}; trying again", reason_of(outcome, repetition_.device)));
            if (!run_.pause(pause_)) {
                return false;
            }
            pause_ = std::min(2 * pause_, LONGEST_PAUSE);
        }
        stream.silence().disturb();
        if (!recovery_.await_application(outcome.failures)) {
            return false;
        }
        tell_of_asking();
        stream.silence().asked(steady_clock::now());
        stream.go_on();
        return true;
    }

    const Repetition &repetition_;
    Run &run_;
    RecordTally &tally_;
    Recovery recovery_;
    std::chrono::milliseconds pause_ = FIRST_PAUSE;
};

} // namespace

Ending repeat(const Repetition &repetition, Run &run, RecordTally &tally)
{
    const Ending ending = Attempts(repetition, run, tally).run();
    const auto silence = repetition.stream.finish(steady_clock::now());
    if (!silence) {
        return ending;
    }
    if (ending == Ending::stopped) {
        say(end_in_silence(repetition.stream, *silence)); // its user does not wait for a cause
        return Ending::stopped_in_silence;
    }
    say(fmt::format("{}; {}",
                    run.given_up() ? giving_up(repetition.stream)
                                   : end_in_silence(repetition.stream, *silence),
                    diagnose(repetition.device).words));
    return Ending::failed;
}

} // namespace stmctl
