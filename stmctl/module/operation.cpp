// Runs one operation of the module, and tells all that came of it.
#include "stmctl/module/operation.hpp"

#include "stmctl/process/capture.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <unistd.h>

#include <cstring>
#include <exception>

namespace stmctl
{

namespace
{

// The callbacks are plain functions: what they work on stands here while an operation runs.
Outcome *outcome_of_run = nullptr;
const Sink *sink_of_run = nullptr;
StmPollFn poll_of_run = nullptr;
std::exception_ptr thrown;

int take_text(const char *text, int more)
{
    outcome_of_run->timed_out = outcome_of_run->timed_out || is_timeout(text);
    try {
        if (*sink_of_run) {
            (*sink_of_run)(text, more);
        } else {
            outcome_of_run->texts.emplace_back(text);
        }
    } catch (...) {
        thrown = thrown ? thrown : std::current_exception();
    }
    return 0;
}

int poll_unless_thrown(char *line)
{
    int polled = 0;
    try {
        polled = thrown ? 0 : poll_of_run(line);
    } catch (...) {
        thrown = std::current_exception();
    }
    if (thrown) {
        memcpy(line, STM_STOP_LINE, sizeof(STM_STOP_LINE));
        polled = 1;
    }
    outcome_of_run->cut_off = outcome_of_run->cut_off || polled != 0;
    return polled;
}

void pass_on(const std::string &text)
{
    if (!text.empty() && write(error_descriptor(), text.data(), text.size()) < 0) {
        // There is nobody left to tell.
    }
}

} // namespace

Outcome perform(const Operation &operation, const Sink &sink, StmPollFn poll)
{
    Outcome outcome;
    outcome_of_run = &outcome;
    sink_of_run = &sink;
    poll_of_run = poll;
    thrown = nullptr;
    take_stop_delivered();
    Capture capture;
    outcome.result = operation(poll_unless_thrown, take_text);
    outcome.stopped = take_stop_delivered();
    Reports reports = read_reports(capture.take());
    pass_on(reports.rest);
    outcome.failures = std::move(reports.failures);
    if (thrown) {
        std::rethrow_exception(thrown);
    }
    return outcome;
}

void check(const Outcome &outcome, const std::string &name)
{
    if (!outcome.failures.empty()) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: {}", name, outcome.failures.front().sentence()));
    }
    if (outcome.timed_out) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: the co-processor did not answer in time; does the "
                                  "application run? See stmctl state",
                                  name));
    }
    if (outcome.stopped) {
        throw Failure(ExitStatus::stopped, fmt::format("{}: stopped before it was done", name));
    }
}

} // namespace stmctl
