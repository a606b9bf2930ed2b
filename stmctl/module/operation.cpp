// Runs one operation of the module and gathers everything that came of it.
#include "stmctl/module/operation.hpp"

#include "stmctl/output/output.hpp"
#include "stmctl/process/capture.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <cstring>
#include <exception>
#include <utility>

namespace stmctl
{

namespace
{

// What the callbacks work on; they are plain functions.
struct Run {
    const Sink &sink;
    const Question &question;
    Outcome outcome;
    std::exception_ptr thrown;
};

Run *running = nullptr;

void notice(Outcome &outcome, Event event)
{
    outcome.timed_out = outcome.timed_out || event == Event::timed_out;
    outcome.rejected = outcome.rejected || event == Event::rejected;
}

int take_text(const char *text, int more)
{
    Run &run = *running;
    try {
        if (more == 0) {
            notice(run.outcome, hear(text).event);
        }
        if (run.sink) {
            run.sink(text, more);
        } else {
            run.outcome.texts.emplace_back(text);
        }
    } catch (...) {
        run.thrown = run.thrown ? run.thrown : std::current_exception();
    }
    return 0;
}

Wish wish_of(Run &run)
{
    try {
        return run.thrown ? Wish::end : run.question();
    } catch (...) {
        run.thrown = std::current_exception();
        return Wish::end;
    }
}

int answer_poll(char *line)
{
    const Wish wish = wish_of(*running);
    if (wish == Wish::go_on) {
        return 0;
    }
    memcpy(line, STM_STOP_LINE, sizeof(STM_STOP_LINE));
    running->outcome.cut_off = true;
    running->outcome.stopped = running->outcome.stopped || wish == Wish::stop;
    return 1;
}

} // namespace

Wish ask_user()
{
    return stop_requested() ? Wish::stop : Wish::go_on;
}

Outcome perform(const Operation &operation, const Sink &sink, const Question &question)
{
    Run run = {sink, question, {}, {}};
    running = &run;
    Capture capture;
    run.outcome.result = operation(answer_poll, take_text);
    Reports reports = read_reports(capture.take());
    pass_on(reports.rest);
    run.outcome.failures = std::move(reports.failures);
    if (run.thrown) {
        std::rethrow_exception(run.thrown);
    }
    return std::move(run.outcome);
}

Outcome synchronise()
{
    return perform([](StmPollFn, StmOutputFn) {
        stm_sync_transfer();
        return 0;
    });
}

void check(const Outcome &outcome, const std::string &name)
{
    if (!outcome.failures.empty()) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: {}", name, outcome.failures.front().sentence()));
    }
    if (outcome.timed_out) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: the co-processor did not answer in time", name));
    }
    if (outcome.stopped) {
        throw Failure(ExitStatus::stopped, fmt::format("{}: stopped before it had finished", name));
    }
}

} // namespace stmctl
