// Takes and counts records as they come from the module, and reports when none come.
#include "stmctl/stream/record_stream.hpp"

#include "stmctl/output/output.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace stmctl
{

namespace
{

constexpr Silence::Duration DEFAULT_SILENCE(10'000);
constexpr Silence::Duration DEFAULT_SILENCE_TO_KEEP_GOING(2'000);
constexpr Silence::Duration WORTH_A_WORD(1'000); // if more was expected soon

Silence::Duration default_silence(const StreamOptions &options)
{
    return options.keep_going ? DEFAULT_SILENCE_TO_KEEP_GOING : DEFAULT_SILENCE;
}

} // namespace

RecordStream::RecordStream(StreamOptions options, Run &run, RecordTally &tally, Take take)
    : options_(std::move(options)), run_(run), tally_(tally), take_(std::move(take)),
      silence_(options_.silence, default_silence(options_), std::chrono::steady_clock::now())
{
}

Sink RecordStream::sink()
{
    return [this](const char *text, int more) {
        if (options_.wanted && tally_.records >= *options_.wanted) {
            return; // the rest of the block
        }
        if (more == 0) {
            take_report(text);
        } else if (const std::optional<RecordFacts> facts = take_(text)) {
            take(*facts);
        }
    };
}

void RecordStream::take(const RecordFacts &facts)
{
    tally_.take(facts);
    ++fresh_;
    if (options_.wanted && tally_.records >= *options_.wanted) {
        run_.finish();
    }
}

void RecordStream::take_report(std::string_view text)
{
    switch (hear(text).event) {
    case Event::timed_out:
        tally_.take_timeout();
        silence_.timed_out();
        tell_of_timeout();
        break;
    case Event::rejected:
        tally_.take_rejected();
        ++fresh_; // something comes
        break;
    default:
        say(text.substr(0, text.find('\n')));
    }
}

void RecordStream::tell_of_timeout() const
{
    if (detail() == Detail::verbose) {
        const auto silent = silence_.lasting(std::chrono::steady_clock::now());
        say(fmt::format("{}: time-out {}, nothing came for {}", options_.name, tally_.timeouts,
                        seconds_words(silent)));
    }
}

void RecordStream::look(Run::Time now)
{
    if (fresh_ == 0) {
        look_in_silence(now);
        return;
    }
    if (const auto length = silence_.came(std::exchange(fresh_, 0), now)) {
        tally_.take_silence(*length);
    }
    if (!told_.empty()) {
        told_.clear();
        say(fmt::format(
            "{}: records are coming again after {}", options_.name,
            seconds_words(std::chrono::duration_cast<Silence::Duration>(now - trouble_begin_))));
    }
}

void RecordStream::look_in_silence(Run::Time now)
{
    if (resting_ || silence_.lasting(now) < WORTH_A_WORD) {
        return;
    }
    if (options_.keep_going && silence_.is_time_to_ask(now)) {
        tell("no data from the co-processor; asking again");
        run_.interrupt();
    } else if (!options_.keep_going && silence_.is_over_limit(now)) {
        run_.give_up();
    } else if (!options_.keep_going && silence_.is_worth_a_word()) {
        tell("no data from the co-processor; waiting for it");
    }
}

void RecordStream::tell(const std::string &sentence)
{
    if (std::ranges::find(told_, sentence) != told_.end()) {
        return;
    }
    if (told_.empty()) {
        const auto now = std::chrono::steady_clock::now();
        trouble_begin_ = now - silence_.lasting(now);
    }
    told_.push_back(sentence);
    say(fmt::format("{}: {}", options_.name, sentence));
}

std::optional<Silence::Duration> RecordStream::finish(Run::Time now)
{
    look(now);
    if (!silence_.is_silence(now) && !run_.given_up()) {
        return {};
    }
    tally_.take_silence(silence_.lasting(now));
    return silence_.lasting(now);
}

std::string seconds_words(std::chrono::milliseconds time)
{
    return fmt::format("{:.1f} s", std::chrono::duration<double>(time).count());
}

} // namespace stmctl
