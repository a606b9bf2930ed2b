// Intercepts the calls that open files, for one path, /dev/spidev1.0, and leaves all others alone.
#include "simulator/preload/descriptors.hpp"
#include "simulator/preload/device_files.hpp"
#include "simulator/preload/device_name.hpp"
#include "simulator/preload/driver_call.hpp"
#include "simulator/preload/program.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace
{

using simulator::Named;
using simulator::RealCall;
using simulator::what_is_named;

constinit RealCall<int(const char *, int, ...)> real_open("open");
constinit RealCall<int(const char *, int, ...)> real_open64("open64");
constinit RealCall<int(int, const char *, int, ...)> real_openat("openat");
constinit RealCall<int(int, const char *, int, ...)> real_openat64("openat64");
constinit RealCall<int(const char *, int)> real_open_2("__open_2");
constinit RealCall<int(const char *, int)> real_open64_2("__open64_2");
constinit RealCall<int(int, const char *, int)> real_openat_2("__openat_2");
constinit RealCall<int(int, const char *, int)> real_openat64_2("__openat64_2");
constinit RealCall<int(const char *, mode_t)> real_creat("creat");
constinit RealCall<int(const char *, mode_t)> real_creat64("creat64");
constinit RealCall<FILE *(const char *, const char *)> real_fopen("fopen");
constinit RealCall<FILE *(const char *, const char *)> real_fopen64("fopen64");

constexpr int CREATING = O_CREAT | O_WRONLY | O_TRUNC;

// Why a device that is there is not opened with these flags, or 0.
int refusal_of(int flags)
{
    if ((flags & O_PATH) == 0 && (flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) {
        return EEXIST;
    }
    if ((flags & O_DIRECTORY) != 0) { // as O_TMPFILE has it, too
        return ENOTDIR;
    }
    return (flags & O_PATH) == 0 && (flags & O_DIRECT) != 0 ? EINVAL : 0;
}

int open_stand_in(int flags)
{
    if (const int refusal = refusal_of(flags); refusal != 0) {
        return simulator::refuse(simulator::device_is_there() ? refusal : ENOENT);
    }
    if ((flags & O_PATH) != 0) { // a name for a device, with which nothing can be done
        return simulator::device_is_there() ? real_open("/dev/null", flags, 0)
                                            : simulator::refuse(ENOENT);
    }
    const int errno_before = errno;
    const int result = simulator::device_open();
    if (result < 0) {
        return simulator::result_or_errno(result, errno_before);
    }
    constexpr int DROPPED_FLAGS = O_CREAT | O_EXCL | O_TRUNC | O_NOFOLLOW;
    const int fd = real_open(simulator::device_stand_in().c_str(), flags & ~DROPPED_FLAGS, 0);
    simulator::know_device_file(fd, result);
    simulator::note_descriptor(fd);
    return fd;
}

int open_named(Named named, int flags)
{
    const simulator::DriverCall call;
    if (named == Named::below_device) {
        return simulator::refuse(ENOTDIR);
    }
    if (!simulator::leaves_device_real()) {
        return open_stand_in(flags);
    }
    simulator::begin_transcript();
    const int fd = real_open(simulator::DEVICE, flags, 0);
    simulator::know_device_file(fd, 0);
    return fd;
}

// The mode argument of an open call, which exists only if the flags can create a file.
mode_t mode_argument(int flags, va_list arguments)
{
    const bool makes_file = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return makes_file ? va_arg(arguments, mode_t) : 0;
}

Named named_for_open(int directory, const char *path, int flags)
{
    return what_is_named(directory, path, (flags & O_NOFOLLOW) == 0);
}

// The flags of a stream's mode, as fopen has them; -1 if it is none.
int stream_flags(const char *mode)
{
    const char kind = *mode;
    if (kind != 'r' && kind != 'w' && kind != 'a') {
        return -1;
    }
    int flags = kind == 'r' ? 0 : O_CREAT | (kind == 'w' ? O_TRUNC : O_APPEND);
    int access = kind == 'r' ? O_RDONLY : O_WRONLY;
    for (const char *at = mode + 1; *at != '\0' && *at != ','; ++at) {
        access = *at == '+' ? O_RDWR : access;
        flags |= (*at == 'x' ? O_EXCL : 0) | (*at == 'e' ? O_CLOEXEC : 0);
    }
    return flags | access;
}

FILE *open_stream(const char *path, const char *mode, FILE *(*real)(const char *, const char *))
{
    const Named named = what_is_named(AT_FDCWD, path);
    const int flags = stream_flags(mode);
    if (named == Named::other || flags < 0) {
        return real(path, mode);
    }
    const int fd = open_named(named, flags);
    return fd < 0 ? nullptr : fdopen(fd, mode);
}

} // namespace

EXPORTED int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    const Named named = named_for_open(AT_FDCWD, path, flags);
    return named != Named::other ? open_named(named, flags) : real_open(path, flags, mode);
}

EXPORTED int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    const Named named = named_for_open(AT_FDCWD, path, flags);
    return named != Named::other ? open_named(named, flags) : real_open64(path, flags, mode);
}

EXPORTED int openat(int directory, const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    const Named named = named_for_open(directory, path, flags);
    return named != Named::other ? open_named(named, flags)
                                 : real_openat(directory, path, flags, mode);
}

EXPORTED int openat64(int directory, const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = mode_argument(flags, arguments);
    va_end(arguments);
    const Named named = named_for_open(directory, path, flags);
    return named != Named::other ? open_named(named, flags)
                                 : real_openat64(directory, path, flags, mode);
}

// What fortified programs call to open without a mode.

EXPORTED int __open_2(const char *path, int flags)
{
    const Named named = named_for_open(AT_FDCWD, path, flags);
    return named != Named::other ? open_named(named, flags) : real_open_2(path, flags);
}

EXPORTED int __open64_2(const char *path, int flags)
{
    const Named named = named_for_open(AT_FDCWD, path, flags);
    return named != Named::other ? open_named(named, flags) : real_open64_2(path, flags);
}

EXPORTED int __openat_2(int directory, const char *path, int flags)
{
    const Named named = named_for_open(directory, path, flags);
    return named != Named::other ? open_named(named, flags) : real_openat_2(directory, path, flags);
}

EXPORTED int __openat64_2(int directory, const char *path, int flags)
{
    const Named named = named_for_open(directory, path, flags);
    return named != Named::other ? open_named(named, flags)
                                 : real_openat64_2(directory, path, flags);
}

EXPORTED int creat(const char *path, mode_t mode)
{
    const Named named = what_is_named(AT_FDCWD, path);
    return named != Named::other ? open_named(named, CREATING) : real_creat(path, mode);
}

EXPORTED int creat64(const char *path, mode_t mode)
{
    const Named named = what_is_named(AT_FDCWD, path);
    return named != Named::other ? open_named(named, CREATING) : real_creat64(path, mode);
}

EXPORTED FILE *fopen(const char *path, const char *mode)
{
    return open_stream(path, mode, real_fopen);
}

EXPORTED FILE *fopen64(const char *path, const char *mode)
{
    return open_stream(path, mode, real_fopen64);
}
