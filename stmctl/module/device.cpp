// The device, checked first, because the module would end the process over a failure.
#include "stmctl/module/device.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/diagnosis.hpp"
#include "stmctl/module/wire_settings.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace stmctl
{

using std::chrono::steady_clock;

namespace
{

// A refused clock is only a warning: the link runs at the device's own. Null if nothing else
// failed.
const Report *failure_of_opening(const Outcome &outcome)
{
    for (const Report &report : outcome.failures) {
        if (!report.is_refused_clock()) {
            return &report;
        }
        say(fmt::format("{}; continuing with the device's own clock", report.sentence()));
    }
    return nullptr;
}

void tell_of_opening(steady_clock::duration to_lock, steady_clock::duration to_open)
{
    using Seconds = std::chrono::duration<double>;
    if (detail() == Detail::verbose) {
        say(fmt::format("{}: locked after {:.3f} s, opened and synchronised in {:.3f} s", DEVICE,
                        Seconds(to_lock).count(), Seconds(to_open).count()));
    }
}

} // namespace

const char *remedy_of_opening(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return "your user must be in the group spi, see stmctl --help access";
    case ENOENT:
    case ENXIO:
    case ENODEV:
        return "the system has no such SPI device, see stmctl --help access";
    default:
        return "see stmctl --help access";
    }
}

// The module ends the process if the device cannot be opened for reading and writing, so that is
// tried first. If the device goes away after that, the module's own message is all there is.
int open_to_lock()
{
    const int lock = open(DEVICE, WAITING_FLAGS | O_CLOEXEC);
    const int tried = open(DEVICE, O_RDWR | O_CLOEXEC);
    const int error = errno;
    if (tried >= 0) {
        close(tried);
    }
    if (lock >= 0 && tried < 0) {
        close(lock);
    }
    errno = error;
    return tried < 0 ? -1 : lock;
}

Outcome open_link()
{
    return perform([](StmPollFn, StmOutputFn) {
        stm_open();
        return 0;
    });
}

void add_device_options(CLI::App &command, DeviceOptions &options)
{
    add_flag(command, "--wait", options.wait, "wait until no other stmctl uses the device");
}

Device::Device(const DeviceOptions &options) : lock_(open_to_lock())
{
    if (lock_ < 0) {
        const int error = errno;
        throw Failure(ExitStatus::not_there,
                      fmt::format("cannot open {}: {}; {}", DEVICE, strerror(error),
                                  remedy_of_opening(error)));
    }
    try {
        const auto begin = steady_clock::now();
        lock_device(lock_, DEVICE, options.wait);
        tell_odd_mode(lock_);
        const auto locked = steady_clock::now();
        const Outcome outcome = open_link();
        open_ = true;
        tell_of_opening(locked - begin, steady_clock::now() - locked);
        if (const Report *failure = failure_of_opening(outcome)) {
            throw Failure(ExitStatus::failed, failure->sentence());
        }
    } catch (...) {
        close();
        throw;
    }
}

Device::~Device()
{
    close();
}

void Device::close()
{
    if (open_) {
        stm_close();
    }
    if (lock_ >= 0) {
        ::close(lock_);
    }
    open_ = false;
    lock_ = -1;
}

bool Device::await_return(const Pause &pause)
{
    constexpr std::chrono::milliseconds BETWEEN_LOOKS(100);
    close();
    while (!reopen(pause)) {
        if (!pause(BETWEEN_LOOKS)) {
            return false;
        }
    }
    return true;
}

// If the device goes away again while it is being opened, the wait starts again.
bool Device::reopen(const Pause &pause)
{
    const auto begin = steady_clock::now();
    lock_ = open_to_lock();
    if (lock_ < 0 || !wait_for_lock(lock_, DEVICE, pause)) {
        close();
        return false;
    }
    const auto locked = steady_clock::now();
    const Outcome outcome = open_link();
    open_ = true;
    tell_of_opening(locked - begin, steady_clock::now() - locked);
    if (is_device_gone(outcome.failures)) {
        close();
        return false;
    }
    return true;
}

void Device::check(const Outcome &outcome, const std::string &name) const
{
    if (outcome.failures.empty() && outcome.timed_out) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: the co-processor did not answer in time; {}", name,
                                  diagnose(*this).words));
    }
    if (!outcome.failures.empty()) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{}: {}", name, sentence_of(outcome.failures.front(), *this)));
    }
    stmctl::check(outcome, name);
}

} // namespace stmctl
