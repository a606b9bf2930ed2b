// Stands in front of open, ioctl and close for one path, /dev/spidev1.0, and leaves all others be.
#include "simulator/preload/real_calls.hpp"
#include "simulator/preload/session.hpp"
#include "simulator/spi_device.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <mutex>

namespace
{

using simulator::RealCall;
using simulator::settings;

constinit RealCall<int(const char *, int, ...)> real_open("open");
constinit RealCall<int(const char *, int, ...)> real_open64("open64");
constinit RealCall<int(int, const char *, int, ...)> real_openat("openat");
constinit RealCall<int(int, const char *, int, ...)> real_openat64("openat64");
constinit RealCall<int(const char *, int)> real_open_2("__open_2");
constinit RealCall<int(const char *, int)> real_open64_2("__open64_2");
constinit RealCall<int(int, const char *, int)> real_openat_2("__openat_2");
constinit RealCall<int(int, const char *, int)> real_openat64_2("__openat64_2");
constinit RealCall<int(int, unsigned long, ...)> real_ioctl("ioctl");
constinit RealCall<int(int)> real_close("close");

constexpr char DEVICE[] = "/dev/spidev1.0";
constexpr size_t MOST_DESCRIPTORS = 65536;

// Descriptors under which the program has the device.
std::array<std::atomic<bool>, MOST_DESCRIPTORS> device_descriptors;

// The driver lets one exchange at a time pass. Recursive: a signal handler may close the device.
std::recursive_mutex driver;

bool is_device(int fd)
{
    return fd >= 0 && static_cast<size_t>(fd) < MOST_DESCRIPTORS &&
           device_descriptors[static_cast<size_t>(fd)];
}

void set_device(int fd, bool is_one)
{
    if (fd >= 0 && static_cast<size_t>(fd) < MOST_DESCRIPTORS) {
        device_descriptors[static_cast<size_t>(fd)] = is_one;
    }
}

int fail(int negated_errno)
{
    errno = -negated_errno;
    return -1;
}

bool names_device(const char *path)
{
    return path != nullptr && strcmp(path, DEVICE) == 0;
}

int open_device(int flags)
{
    const std::scoped_lock lock(driver);
    if (settings().through) {
        simulator::begin_transcript();
        const int fd = real_open(DEVICE, flags, 0);
        set_device(fd, true);
        return fd;
    }
    const int result = simulator::device_open();
    if (result < 0) {
        return fail(result);
    }
    const int fd = real_open(simulator::device_stand_in(), O_RDONLY | (flags & O_CLOEXEC), 0);
    set_device(fd, true);
    return fd;
}

int ioctl_through(int fd, unsigned long request, void *argument)
{
    const int result = real_ioctl(fd, request, argument);
    const int error = errno;
    const int transfers = simulator::transfers_of(request);
    if (transfers > 0) {
        simulator::record_real_message(
            {static_cast<const spi_ioc_transfer *>(argument), static_cast<size_t>(transfers)},
            result < 0 ? -error : result);
    }
    errno = error;
    return result;
}

int device_ioctl(int fd, unsigned long request, void *argument)
{
    const std::scoped_lock lock(driver);
    if (settings().through) {
        return ioctl_through(fd, request, argument);
    }
    const int result = simulator::device_ioctl(request, argument);
    return result < 0 ? fail(result) : result;
}

// The mode argument of an open call, which is there only if the flags make a file.
mode_t mode_argument(int flags, va_list arguments)
{
    const bool makes_file = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return makes_file ? va_arg(arguments, mode_t) : 0;
}

} // namespace

EXPORTED int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return names_device(path) ? open_device(flags) : real_open(path, flags, mode);
}

EXPORTED int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return names_device(path) ? open_device(flags) : real_open64(path, flags, mode);
}

EXPORTED int openat(int directory, const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return names_device(path) ? open_device(flags) : real_openat(directory, path, flags, mode);
}

EXPORTED int openat64(int directory, const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return names_device(path) ? open_device(flags) : real_openat64(directory, path, flags, mode);
}

// What a fortified program calls when it opens without a mode.

EXPORTED int __open_2(const char *path, int flags)
{
    return names_device(path) ? open_device(flags) : real_open_2(path, flags);
}

EXPORTED int __open64_2(const char *path, int flags)
{
    return names_device(path) ? open_device(flags) : real_open64_2(path, flags);
}

EXPORTED int __openat_2(int directory, const char *path, int flags)
{
    return names_device(path) ? open_device(flags) : real_openat_2(directory, path, flags);
}

EXPORTED int __openat64_2(int directory, const char *path, int flags)
{
    return names_device(path) ? open_device(flags) : real_openat64_2(directory, path, flags);
}

EXPORTED int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return is_device(fd) ? device_ioctl(fd, request, argument) : real_ioctl(fd, request, argument);
}

#if __SIZEOF_LONG__ == 4
// What ioctl is called in 32-bit programs with 64-bit times.
EXPORTED int __ioctl_time64(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return ioctl(fd, request, argument);
}
#endif

EXPORTED int close(int fd)
{
    if (is_device(fd)) {
        const std::scoped_lock lock(driver);
        set_device(fd, false);
        if (!settings().through) {
            simulator::device_close();
        }
    }
    return real_close(fd);
}
