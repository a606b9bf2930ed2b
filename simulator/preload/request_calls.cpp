// Intercepts what a program asks of a descriptor of the device: ioctl and fcntl.
#include "simulator/driver/user_memory.hpp"
#include "simulator/preload/device_files.hpp"
#include "simulator/preload/driver_call.hpp"
#include "simulator/preload/program.hpp"
#include "simulator/preload/real_calls.hpp"
#include "simulator/store/open_descriptors.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>

namespace
{

using simulator::RealCall;

constinit RealCall<int(int, unsigned long, ...)> real_ioctl("ioctl");
constinit RealCall<int(int, int, ...)> real_fcntl("fcntl");
constinit RealCall<int(int, int, ...)> real_fcntl64("fcntl64");

// An inherited descriptor is recognised, too: by the stand-in's name.
void know_inherited_device()
{
    if (!simulator::knows_device_file() && !simulator::leaves_device_real()) {
        simulator::know_device_file_if_none_is(simulator::device_stand_in().c_str());
    }
}

int ioctl_through(int fd, unsigned long request, void *argument)
{
    const int result = real_ioctl(fd, request, argument);
    const int error = errno;
    const int count = simulator::transfers_of(request);
    if (count > 0) {
        std::vector<spi_ioc_transfer> transfers(static_cast<size_t>(count));
        const size_t size = transfers.size() * sizeof(spi_ioc_transfer);
        if (!simulator::copy_from_user(transfers.data(), simulator::user_address(argument), size)) {
            transfers.clear();
        }
        simulator::record_real_message(transfers, result < 0 ? -error : result);
    }
    errno = error;
    return result;
}

int device_ioctl(int fd, int generation, unsigned long request, void *argument)
{
    const int errno_before = errno;
    const simulator::DriverCall call;
    if (simulator::leaves_device_real()) {
        return ioctl_through(fd, request, argument);
    }
    return simulator::result_or_errno(simulator::device_ioctl(generation, request, argument),
                                      errno_before);
}

// Requests that any descriptor accepts, whatever it belongs to.
bool concerns_descriptor(unsigned long request)
{
    return request == FIOCLEX || request == FIONCLEX || request == FIONBIO || request == FIOASYNC;
}

// A program's locks are behind those by which its descriptors are counted.
template <typename Lock>
int lock_behind(int fd, int command, Lock *lock, int (*real)(int, int, ...))
{
    if (lock == nullptr) {
        return simulator::refuse(EFAULT);
    }
    using Place = decltype(lock->l_start);
    constexpr auto OWN_PLACES = static_cast<Place>(simulator::PLACES_OF_DESCRIPTORS);
    Lock behind = *lock;
    behind.l_start += behind.l_whence == SEEK_CUR ? 0 : OWN_PLACES;
    const int result = real(fd, command, &behind);
    if (result == 0 && behind.l_type != lock->l_type) { // another program's, which was looked for
        behind.l_start -= behind.l_start >= OWN_PLACES ? OWN_PLACES : 0;
        *lock = behind;
    }
    return result;
}

// How a lock of a descriptor is written down depends on the call.
template <typename Lock>
int device_fcntl(int fd, int command, uintptr_t argument, int (*real)(int, int, ...))
{
    if (command == F_SETFL && (argument & O_DIRECT) != 0) {
        return simulator::refuse(EINVAL);
    }
    switch (command) {
    case F_GETLK:
    case F_SETLK:
    case F_SETLKW:
        return lock_behind(fd, command, reinterpret_cast<struct flock *>(argument), real);
    case F_OFD_GETLK:
    case F_OFD_SETLK:
    case F_OFD_SETLKW:
        return lock_behind(fd, command, reinterpret_cast<Lock *>(argument), real);
#if __SIZEOF_LONG__ == 4
    case F_GETLK64:
    case F_SETLK64:
    case F_SETLKW64:
        return lock_behind(fd, command, reinterpret_cast<struct flock64 *>(argument), real);
#endif
    default:
        return real(fd, command, argument);
    }
}

} // namespace

EXPORTED int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    request &= 0xFFFFFFFF; // as the kernel sees it
    if (_IOC_TYPE(request) == SPI_IOC_MAGIC) {
        know_inherited_device();
    }
    const int generation = simulator::device_generation(fd);
    return generation != simulator::NOT_OF_DEVICE && !concerns_descriptor(request)
               ? device_ioctl(fd, generation, request, argument)
               : real_ioctl(fd, request, argument);
}

EXPORTED int fcntl(int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    const auto argument = va_arg(arguments, uintptr_t);
    va_end(arguments);
    return simulator::is_virtual_device(fd)
               ? device_fcntl<struct flock>(fd, command, argument, real_fcntl)
               : real_fcntl(fd, command, argument);
}

EXPORTED int fcntl64(int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    const auto argument = va_arg(arguments, uintptr_t);
    va_end(arguments);
    return simulator::is_virtual_device(fd)
               ? device_fcntl<struct flock64>(fd, command, argument, real_fcntl64)
               : real_fcntl64(fd, command, argument);
}

#if __SIZEOF_LONG__ == 4

// The names in 32-bit programs with 64-bit times.

EXPORTED int __ioctl_time64(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return ioctl(fd, request, argument);
}

EXPORTED int __fcntl_time64(int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    const auto argument = va_arg(arguments, uintptr_t);
    va_end(arguments);
    return fcntl64(fd, command, argument);
}

#endif
