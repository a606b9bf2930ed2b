// Why the co-processor does not do what it is asked for.
#include "stmctl/module/diagnosis.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/module/device.hpp"
#include "stmctl/module/operation.hpp"

#include <fmt/format.h>

#include <algorithm>

namespace stmctl
{

namespace
{

struct Answer {
    uint8_t mode;
    Condition condition;
    const char *words;
};

constexpr Answer ANSWERS[] = {
    {APPLICATION, Condition::application, "the application runs, but does not answer this"},
    {BOOT_LOADER, Condition::boot_loader,
     "the boot loader runs, stmctl reset starts the application"},
    {SILENT_LINE, Condition::no_answer,
     "nothing answers at all: has the co-processor power, does it hang?"},
    {UNDRIVEN_LINE, Condition::no_answer, "nobody drives the line: is the co-processor there?"},
};

Diagnosis meaning_of(uint8_t mode)
{
    const auto *found = std::ranges::find(ANSWERS, mode, &Answer::mode);
    if (found == std::end(ANSWERS)) {
        return {Condition::no_answer,
                fmt::format("its mode is {}, which is none; {}", mode, DeviceUsers().suspicion()),
                {}};
    }
    return {found->condition, found->words, {}};
}

} // namespace

Diagnosis diagnose(const Device &device)
{
    if (!device.is_open()) {
        return {Condition::failed, "the device is gone", {}};
    }
    const DeviceUsers users = device.other_users();
    if (!users.processes.empty()) {
        return {Condition::shared, users.clause("the device") + ", too", {}};
    }
    uint8_t mode = 0;
    const Outcome outcome =
        perform([&](StmPollFn, StmOutputFn) { return stm_query_byte(MODE_QUERY, &mode); });
    if (!outcome.failures.empty()) {
        return {Condition::failed, outcome.failures.front().sentence(), outcome.failures};
    }
    return meaning_of(mode);
}

std::string sentence_of(const Report &report, const Device &device)
{
    if (!report.is_length_refused()) {
        return report.sentence();
    }
    const Diagnosis diagnosis = diagnose(device);
    return fmt::format("{}; {}", report.sentence(),
                       diagnosis.condition == Condition::application
                           ? "the co-processor announced a length that cannot be; " +
                                 device.other_users().suspicion()
                           : diagnosis.words);
}

std::string odd_mode_words(uint8_t answer, const Device &device)
{
    return odd_mode_words(answer, device.other_users());
}

std::string odd_mode_words(uint8_t answer, const DeviceUsers &users)
{
    return answer == SILENT_LINE     ? "nothing answers"
           : answer == UNDRIVEN_LINE ? "nobody drives the line"
                                     : "that is no mode; " + users.suspicion();
}

} // namespace stmctl
