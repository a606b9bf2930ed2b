// Restores the dialogue with the co-processor after a failure.
#include "stmctl/module/recovery.hpp"

#include "stmctl/module/diagnosis.hpp"

#include <fmt/format.h>

#include <utility>

namespace stmctl
{

namespace
{

constexpr std::chrono::milliseconds BETWEEN_LOOKS(500); // at who has the device open
constexpr std::chrono::seconds BETWEEN_QUERIES(2);      // of the mode
constexpr std::chrono::minutes BETWEEN_REMINDERS(1);

} // namespace

Recovery::Recovery(Device &device, Pause pause, Tell tell)
    : device_(device), pause_(std::move(pause)), tell_(std::move(tell))
{
}

bool Recovery::await_link(const std::vector<Report> &failures)
{
    bool gone = is_device_gone(failures);
    for (;;) {
        if (gone) {
            tell_("the device is gone; waiting for it");
            if (!device_.await_return(pause_)) {
                return false;
            }
        }
        if (!await_sole_use()) {
            return false;
        }
        const Outcome outcome = synchronise();
        gone = is_device_gone(outcome.failures);
        if (!gone) {
            tell_of_failures(outcome.failures);
            return true;
        }
    }
}

bool Recovery::await_application(const std::vector<Report> &failures)
{
    std::vector<Report> latest = failures;
    for (;;) {
        if (!await_link(latest)) {
            return false;
        }
        const Diagnosis diagnosis = diagnose(device_);
        latest = diagnosis.failures;
        if (diagnosis.condition == Condition::boot_loader) {
            tell_("the boot loader is running; waiting for the application, which stmctl reset "
                  "starts");
            if (!pause_(BETWEEN_QUERIES)) {
                return false;
            }
        } else if (diagnosis.condition != Condition::shared && !is_device_gone(latest)) {
            return true;
        }
    }
}

// Anything sent in the middle of another program's dialogue breaks it: a download, for instance,
// gets no further acknowledgement.
bool Recovery::await_sole_use()
{
    using std::chrono::steady_clock;
    const auto begin = steady_clock::now();
    bool told = false;
    for (auto reminder = begin + BETWEEN_REMINDERS;;) {
        const DeviceUsers users = device_.other_users();
        tell_of_hidden(users);
        if (users.processes.empty()) {
            return true;
        }
        if (!std::exchange(told, true)) { // once: others of its processes come and go
            tell_(fmt::format("nothing is sent while {}; waiting for {}",
                              users.clause("the device"),
                              users.processes.size() == 1 ? "it" : "them"));
        }
        const auto now = steady_clock::now();
        if (now >= reminder) {
            reminder += BETWEEN_REMINDERS;
            const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(now - begin);
            tell_(fmt::format("still waiting for {} after {} min", users.words(), minutes.count()));
        }
        if (!pause_(BETWEEN_LOOKS)) {
            return false;
        }
    }
}

void Recovery::tell_of_failures(const std::vector<Report> &failures)
{
    for (const Report &report : failures) {
        tell_(report.sentence());
    }
}

void Recovery::tell_of_hidden(const DeviceUsers &users)
{
    if (users.some_hidden && !std::exchange(told_of_hidden_, true)) {
        tell_("processes of other users cannot be inspected: they may have the device open");
    }
}

} // namespace stmctl
