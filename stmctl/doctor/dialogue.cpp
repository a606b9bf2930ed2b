// A short dialogue with the co-processor, to see whether it works.
#include "stmctl/doctor/dialogue.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/mode/mode.hpp"
#include "stmctl/module/wire_settings.hpp"
#include "stmctl/output/printable.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <algorithm>
#include <chrono>

namespace stmctl
{

namespace
{

class OpenLink
{
  public:
    OpenLink() : outcome_(open_link()) {}
    ~OpenLink() { stm_close(); }
    OpenLink(const OpenLink &) = delete;
    OpenLink &operator=(const OpenLink &) = delete;

    const Outcome &outcome() const { return outcome_; }

  private:
    Outcome outcome_;
};

void take_failures(const Outcome &opening, Dialogue &dialogue)
{
    for (const Report &report : opening.failures) {
        (report.is_refused_clock() ? dialogue.refused_clock : dialogue.not_synchronised) = report;
    }
}

// Empty if it succeeded.
std::string failure_of(const Outcome &outcome)
{
    if (outcome.stopped || stop_requested()) {
        throw Failure(ExitStatus::stopped, "doctor: stopped before it had finished");
    }
    if (!outcome.failures.empty()) {
        return outcome.failures.front().sentence();
    }
    return outcome.timed_out ? "no answer in time" : "";
}

Answer<uint8_t> ask(uint8_t query)
{
    uint8_t answer = 0;
    const std::string failure =
        failure_of(perform([&](StmPollFn, StmOutputFn) { return stm_query_byte(query, &answer); }));
    return failure.empty() ? Answer<uint8_t>{answer, {}} : Answer<uint8_t>{{}, failure};
}

// The quickest one: the others were slowed down by other work of the machine.
Answer<double> time_exchanges()
{
    using std::chrono::steady_clock;
    constexpr int COUNT = 5;
    std::chrono::duration<double> quickest = std::chrono::hours(1);
    for (int i = 0; i < COUNT; ++i) {
        const auto begin = steady_clock::now();
        const std::string failure = failure_of(synchronise());
        if (!failure.empty()) {
            return {{}, failure};
        }
        quickest = std::min<std::chrono::duration<double>>(quickest, steady_clock::now() - begin);
    }
    return {quickest.count(), {}};
}

Answer<std::string> ask_sampletime()
{
    const Outcome outcome = perform([](StmPollFn poll, StmOutputFn output) {
        stm_query_short(poll, output);
        return 0;
    });
    const std::string failure = failure_of(outcome);
    if (!failure.empty() || outcome.texts.empty()) {
        return {{}, failure.empty() ? "the answer is empty" : failure};
    }
    std::string text = printable_line(outcome.texts.front());
    text.pop_back();
    return {text, {}};
}

} // namespace

Dialogue talk(int descriptor)
{
    Dialogue dialogue;
    const OpenLink link;
    take_failures(link.outcome(), dialogue);
    dialogue.speed_hz = wire_settings_of(descriptor).speed_hz;
    if (dialogue.not_synchronised) {
        return dialogue;
    }
    dialogue.mode = ask(MODE_QUERY);
    dialogue.version = ask(VERSION_QUERY);
    if (dialogue.mode.value == APPLICATION) {
        dialogue.sampletime = ask_sampletime();
    }
    dialogue.exchange_seconds = time_exchanges();
    return dialogue;
}

} // namespace stmctl
