// Intercepts open and ioctl for one path, /dev/spidev1.0, and leaves all others alone.
#include "simulator/driver/user_memory.hpp"
#include "simulator/preload/descriptors.hpp"
#include "simulator/preload/device_files.hpp"
#include "simulator/preload/program.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstring>
#include <filesystem>

namespace
{

using simulator::RealCall;

constinit RealCall<int(const char *, int, ...)> real_open("open");
constinit RealCall<int(const char *, int, ...)> real_open64("open64");
constinit RealCall<int(int, const char *, int, ...)> real_openat("openat");
constinit RealCall<int(int, const char *, int, ...)> real_openat64("openat64");
constinit RealCall<int(const char *, int)> real_open_2("__open_2");
constinit RealCall<int(const char *, int)> real_open64_2("__open64_2");
constinit RealCall<int(int, const char *, int)> real_openat_2("__openat_2");
constinit RealCall<int(int, const char *, int)> real_openat64_2("__openat64_2");
constinit RealCall<int(int, unsigned long, ...)> real_ioctl("ioctl");

constexpr char DEVICE[] = "/dev/spidev1.0";
constexpr char DEVICE_NAME[] = "spidev1.0";

// The driver lets one exchange pass at a time, and a thread in the middle of one receives no signal
// and is not cancelled until it is over. A child inherits the driver while nobody is in it.
pthread_mutex_t driver = PTHREAD_MUTEX_INITIALIZER;

[[gnu::constructor]] void keep_driver_whole_over_forks()
{
    pthread_atfork([] { pthread_mutex_lock(&driver); }, [] { pthread_mutex_unlock(&driver); },
                   [] { pthread_mutex_unlock(&driver); });
}

class DriverCall
{
  public:
    DriverCall()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_);
        pthread_mutex_lock(&driver);
    }
    ~DriverCall()
    {
        pthread_mutex_unlock(&driver);
        pthread_setcancelstate(cancel_state_, nullptr);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    DriverCall(const DriverCall &) = delete;
    DriverCall &operator=(const DriverCall &) = delete;

  private:
    sigset_t before_ = {};
    int cancel_state_ = 0;
};

// An inherited descriptor is recognised, too: by the stand-in's name.
void know_inherited_device()
{
    if (!simulator::knows_device_file() && !simulator::leaves_device_real()) {
        simulator::know_device_file_if_none_is(simulator::device_stand_in().c_str());
    }
}

int result_or_errno(int result, int errno_before)
{
    errno = result < 0 ? -result : errno_before;
    return result < 0 ? -1 : result;
}

// The absolute path in its normal form.
std::filesystem::path whole_path(int directory, const char *path)
{
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path base = "/proc/self/cwd";
    if (directory != AT_FDCWD) {
        base = "/proc/self/fd/" + std::to_string(directory);
    }
    return (fs::read_symlink(base, error) / path).lexically_normal();
}

bool names_device(int directory, const char *path)
{
    if (path == nullptr || strcmp(path, DEVICE) == 0) {
        return path != nullptr;
    }
    const size_t length = strlen(path);
    const size_t name = sizeof(DEVICE_NAME) - 1;
    return length >= name && strcmp(path + length - name, DEVICE_NAME) == 0 &&
           whole_path(directory, path) == DEVICE;
}

int open_device(int flags)
{
    const int errno_before = errno;
    const DriverCall call;
    if (simulator::leaves_device_real()) {
        simulator::begin_transcript();
        const int fd = real_open(DEVICE, flags, 0);
        simulator::know_device_file(fd, 0);
        return fd;
    }
    const int result = simulator::device_open();
    if (result < 0) {
        return result_or_errno(result, errno_before);
    }
    constexpr int KEPT_FLAGS = O_ACCMODE | O_CLOEXEC | O_NONBLOCK;
    const int fd = real_open(simulator::device_stand_in().c_str(), flags & KEPT_FLAGS, 0);
    simulator::know_device_file(fd, result);
    simulator::note_descriptor(fd);
    return fd;
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
    const DriverCall call;
    if (simulator::leaves_device_real()) {
        return ioctl_through(fd, request, argument);
    }
    return result_or_errno(simulator::device_ioctl(generation, request, argument), errno_before);
}

// Requests that any descriptor accepts, whatever it belongs to.
bool concerns_descriptor(unsigned long request)
{
    return request == FIOCLEX || request == FIONCLEX || request == FIONBIO || request == FIOASYNC;
}

// The mode argument of an open call, which exists only if the flags can create a file.
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
    return names_device(AT_FDCWD, path) ? open_device(flags) : real_open(path, flags, mode);
}

EXPORTED int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return names_device(AT_FDCWD, path) ? open_device(flags) : real_open64(path, flags, mode);
}

EXPORTED int openat(int directory, const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return names_device(directory, path) ? open_device(flags)
                                         : real_openat(directory, path, flags, mode);
}

EXPORTED int openat64(int directory, const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    return names_device(directory, path) ? open_device(flags)
                                         : real_openat64(directory, path, flags, mode);
}

// What fortified programs call to open without a mode.

EXPORTED int __open_2(const char *path, int flags)
{
    return names_device(AT_FDCWD, path) ? open_device(flags) : real_open_2(path, flags);
}

EXPORTED int __open64_2(const char *path, int flags)
{
    return names_device(AT_FDCWD, path) ? open_device(flags) : real_open64_2(path, flags);
}

EXPORTED int __openat_2(int directory, const char *path, int flags)
{
    return names_device(directory, path) ? open_device(flags)
                                         : real_openat_2(directory, path, flags);
}

EXPORTED int __openat64_2(int directory, const char *path, int flags)
{
    return names_device(directory, path) ? open_device(flags)
                                         : real_openat64_2(directory, path, flags);
}

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

#if __SIZEOF_LONG__ == 4
// The name of ioctl in 32-bit programs with 64-bit times.
EXPORTED int __ioctl_time64(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    return ioctl(fd, request, argument);
}
#endif
