// The device, looked at before the module ends the process over it.
#include "stmctl/module/device.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/module/device_lock.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace stmctl
{

namespace
{

constexpr char DEVICE[] = "/dev/spidev1.0";

const char *remedy(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return "your user needs the group spi, see stmctl --help access";
    case ENOENT:
    case ENXIO:
    case ENODEV:
        return "the system has no such SPI device, see stmctl --help access";
    default:
        return "see stmctl --help access";
    }
}

int look()
{
    const int descriptor = open(DEVICE, O_RDWR | O_CLOEXEC);
    if (descriptor < 0) {
        const int error = errno;
        throw Failure(ExitStatus::not_there, fmt::format("cannot open {}: {}; {}", DEVICE,
                                                         strerror(error), remedy(error)));
    }
    return descriptor;
}

// A refused clock is a warning: the link runs at the device's own. Anything else is the end.
void open_link()
{
    const Outcome outcome = perform([](StmPollFn, StmOutputFn) {
        stm_open();
        return 0;
    });
    for (const Report &report : outcome.failures) {
        if (report.text != "Error: writing speed failed") {
            stm_close();
            throw Failure(ExitStatus::failed, report.sentence());
        }
        say(fmt::format("{}; going on with the device's own", report.sentence()));
    }
}

} // namespace

void add_device_options(CLI::App &command, DeviceOptions &options)
{
    add_flag(command, "--wait", options.wait, "wait until no other stmctl uses the device");
}

Device::Device(const DeviceOptions &options) : descriptor_(look())
{
    try {
        lock_device(descriptor_, DEVICE, options.wait);
        open_link();
    } catch (...) {
        close(descriptor_);
        throw;
    }
}

Device::~Device()
{
    stm_close();
    close(descriptor_);
}

} // namespace stmctl
