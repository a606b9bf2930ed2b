// Records as they come from the module, taken and counted.
#include "stmctl/stream/record_stream.hpp"

#include "stmctl/output/output.hpp"

#include <fmt/format.h>

namespace stmctl
{

RecordStream::RecordStream(std::string name, Run &run, std::optional<uint32_t> wanted,
                           bool keep_going, RecordTally &tally, Take take)
    : name_(std::move(name)), run_(run), wanted_(wanted), keep_going_(keep_going), tally_(tally),
      take_(std::move(take))
{
}

Sink RecordStream::sink()
{
    return [this](const char *text, int more) {
        if (wanted_ && tally_.records >= *wanted_) {
            return; // what else the block holds
        }
        if (more == 0) {
            take_report(text);
            return;
        }
        if (const std::optional<RecordFacts> facts = take_(text)) {
            tally_.take(*facts);
            waiting_ = false;
            last_ = std::chrono::steady_clock::now();
        }
        if (wanted_ && tally_.records >= *wanted_) {
            run_.finish();
        }
    };
}

void RecordStream::take_report(std::string_view text)
{
    const RecordTally before = tally_;
    if (!tally_.take_report(text)) {
        say(text.substr(0, text.find('\n')));
    }
    if (tally_.rejected > before.rejected) {
        last_ = std::chrono::steady_clock::now();
    }
    if (tally_.timeouts > before.timeouts) {
        take_timeout();
    }
}

// A slow stream times out again and again.
void RecordStream::take_timeout()
{
    constexpr std::chrono::seconds PATIENCE(1);
    constexpr std::chrono::seconds MOST(10);
    const auto silence = std::chrono::steady_clock::now() - last_;
    if (silence >= PATIENCE && !waiting_) {
        waiting_ = true;
        say(fmt::format("{}: nothing comes from the co-processor; waiting for it", name_));
    }
    if (silence >= MOST && !keep_going_ && !run_.given_up()) {
        say(fmt::format("{}: nothing has come for 10 seconds; does the application run? See stmctl "
                        "state",
                        name_));
        run_.give_up();
    }
}

} // namespace stmctl
