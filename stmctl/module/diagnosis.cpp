// Finds out why the co-processor does not do what it is asked to.
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
    {APPLICATION, Condition::application, "the application is running but does not answer this"},
    {BOOT_LOADER, Condition::boot_loader,
     "the boot loader is running (stmctl reset starts the application)"},
    {SILENT_LINE, Condition::no_answer,
     "nothing is answering: does the co-processor have power, or has it hung?"},
    {UNDRIVEN_LINE, Condition::no_answer,
     "nothing drives the line: is the co-processor connected?"},
};

Diagnosis meaning_of(uint8_t mode)
{
    const auto *found = std::ranges::find(ANSWERS, mode, &Answer::mode);
    if (found == std::end(ANSWERS)) {
        return {Condition::no_answer,
                fmt::format("it reports mode {}, which does not exist; {}", mode,
                            DeviceUsers().suspicion()),
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
                           ? "the co-processor announced an impossible length; " +
                                 device.other_users().suspicion()
                           : diagnosis.words);
}

std::string odd_mode_words(uint8_t answer, const Device &device)
{
    return odd_mode_words(answer, device.other_users());
}

std::string odd_mode_words(uint8_t answer, const DeviceUsers &users)
{
    return answer == SILENT_LINE     ? "so nothing is answering"
           : answer == UNDRIVEN_LINE ? "so nothing drives the line"
                                     : "which is not a mode; " + users.suspicion();
}

} // namespace stmctl
