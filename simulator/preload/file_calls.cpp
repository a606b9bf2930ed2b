// Intercepts calls for files that mean nothing to the device: its driver refuses them.
#include "simulator/preload/device_files.hpp"
#include "simulator/preload/driver_call.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include <cerrno>

namespace
{

using simulator::is_virtual_device;
using simulator::RealCall;
using simulator::refuse;

constinit RealCall<off_t(int, off_t, int)> real_lseek("lseek");
constinit RealCall<off64_t(int, off64_t, int)> real_lseek64("lseek64");
constinit RealCall<void *(void *, size_t, int, int, int, off_t)> real_mmap("mmap");
constinit RealCall<void *(void *, size_t, int, int, int, off64_t)> real_mmap64("mmap64");
constinit RealCall<int(int)> real_fsync("fsync");
constinit RealCall<int(int)> real_fdatasync("fdatasync");
constinit RealCall<int(int, off_t)> real_ftruncate("ftruncate");
constinit RealCall<int(int, off64_t)> real_ftruncate64("ftruncate64");
constinit RealCall<int(int, int, off_t, off_t)> real_fallocate("fallocate");
constinit RealCall<int(int, int, off64_t, off64_t)> real_fallocate64("fallocate64");
constinit RealCall<ssize_t(int, int, off_t *, size_t)> real_sendfile("sendfile");
constinit RealCall<ssize_t(int, int, off64_t *, size_t)> real_sendfile64("sendfile64");
constinit RealCall<ssize_t(int, off64_t *, int, off64_t *, size_t, unsigned)>
    real_copy_file_range("copy_file_range");

bool maps_device(int flags, int fd)
{
    return (flags & MAP_ANONYMOUS) == 0 && is_virtual_device(fd);
}

void *refuse_mapping()
{
    errno = ENODEV;
    return MAP_FAILED;
}

} // namespace

EXPORTED off_t lseek(int fd, off_t place, int from) noexcept
{
    return is_virtual_device(fd) ? refuse(ESPIPE) : real_lseek(fd, place, from);
}

EXPORTED off64_t lseek64(int fd, off64_t place, int from) noexcept
{
    return is_virtual_device(fd) ? refuse(ESPIPE) : real_lseek64(fd, place, from);
}

EXPORTED void *mmap(void *at, size_t size, int access, int flags, int fd, off_t place) noexcept
{
    return maps_device(flags, fd) ? refuse_mapping()
                                  : real_mmap(at, size, access, flags, fd, place);
}

EXPORTED void *mmap64(void *at, size_t size, int access, int flags, int fd, off64_t place) noexcept
{
    return maps_device(flags, fd) ? refuse_mapping()
                                  : real_mmap64(at, size, access, flags, fd, place);
}

EXPORTED int fsync(int fd)
{
    return is_virtual_device(fd) ? refuse(EINVAL) : real_fsync(fd);
}

EXPORTED int fdatasync(int fd)
{
    return is_virtual_device(fd) ? refuse(EINVAL) : real_fdatasync(fd);
}

EXPORTED int ftruncate(int fd, off_t size) noexcept
{
    return is_virtual_device(fd) ? refuse(EINVAL) : real_ftruncate(fd, size);
}

EXPORTED int ftruncate64(int fd, off64_t size) noexcept
{
    return is_virtual_device(fd) ? refuse(EINVAL) : real_ftruncate64(fd, size);
}

EXPORTED int fallocate(int fd, int how, off_t place, off_t size)
{
    return is_virtual_device(fd) ? refuse(ENODEV) : real_fallocate(fd, how, place, size);
}

EXPORTED int fallocate64(int fd, int how, off64_t place, off64_t size)
{
    return is_virtual_device(fd) ? refuse(ENODEV) : real_fallocate64(fd, how, place, size);
}

EXPORTED ssize_t sendfile(int to, int from, off_t *place, size_t size) noexcept
{
    return is_virtual_device(to) || is_virtual_device(from) ? refuse(EINVAL)
                                                            : real_sendfile(to, from, place, size);
}

EXPORTED ssize_t sendfile64(int to, int from, off64_t *place, size_t size) noexcept
{
    return is_virtual_device(to) || is_virtual_device(from)
               ? refuse(EINVAL)
               : real_sendfile64(to, from, place, size);
}

EXPORTED ssize_t copy_file_range(int from, off64_t *place, int to, off64_t *other_place,
                                 size_t size, unsigned flags)
{
    return is_virtual_device(to) || is_virtual_device(from)
               ? refuse(EINVAL)
               : real_copy_file_range(from, place, to, other_place, size, flags);
}
