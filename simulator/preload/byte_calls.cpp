// Intercepts the calls that read and write bytes: with the device they are exchanges in which the bytes of
// one direction do not matter.
#include "simulator/driver/user_memory.hpp"
#include "simulator/preload/device_files.hpp"
#include "simulator/preload/driver_call.hpp"
#include "simulator/preload/program.hpp"
#include "simulator/preload/real_calls.hpp"

#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <vector>

namespace
{

using simulator::is_virtual_device;
using simulator::RealCall;
using simulator::refuse;

constinit RealCall<ssize_t(int, void *, size_t)> real_read("read");
constinit RealCall<ssize_t(int, void *, size_t, size_t)> real_read_chk("__read_chk");
constinit RealCall<ssize_t(int, const void *, size_t)> real_write("write");
constinit RealCall<ssize_t(int, const iovec *, int)> real_readv("readv");
constinit RealCall<ssize_t(int, const iovec *, int)> real_writev("writev");
constinit RealCall<ssize_t(int, void *, size_t, off_t)> real_pread("pread");
constinit RealCall<ssize_t(int, void *, size_t, off64_t)> real_pread64("pread64");
constinit RealCall<ssize_t(int, const void *, size_t, off_t)> real_pwrite("pwrite");
constinit RealCall<ssize_t(int, const void *, size_t, off64_t)> real_pwrite64("pwrite64");

using DeviceCall = int (*)(int fd, void *bytes, size_t size);

// A descriptor that was not opened for this is refused by its file, for no bytes at all.

int read_device(int fd, void *to, size_t size)
{
    const int errno_before = errno;
    if (real_read(fd, to, 0) < 0) {
        return -1;
    }
    const simulator::DriverCall call;
    const int generation = simulator::device_generation(fd);
    return simulator::result_or_errno(simulator::device_read(generation, to, size), errno_before);
}

int write_device(int fd, void *from, size_t size)
{
    const int errno_before = errno;
    if (real_write(fd, from, 0) < 0) {
        return -1;
    }
    const simulator::DriverCall call;
    const int generation = simulator::device_generation(fd);
    return simulator::result_or_errno(simulator::device_write(generation, from, size),
                                      errno_before);
}

// Each buffer is an exchange. The first that fails ends the call, which returns what was exchanged before.
ssize_t for_each(int fd, const iovec *buffers, int count, DeviceCall exchange)
{
    if (count < 0 || count > IOV_MAX) {
        return refuse(EINVAL);
    }
    std::vector<iovec> copies(static_cast<size_t>(count));
    if (!simulator::copy_from_user(copies.data(), simulator::user_address(buffers),
                                   copies.size() * sizeof(iovec))) {
        return refuse(EFAULT);
    }
    ssize_t total = 0;
    for (const iovec &buffer : copies) {
        const int result = exchange(fd, buffer.iov_base, buffer.iov_len);
        if (result < 0) {
            return total > 0 ? total : -1;
        }
        total += result;
    }
    return total;
}

} // namespace

EXPORTED ssize_t read(int fd, void *to, size_t size)
{
    return is_virtual_device(fd) ? read_device(fd, to, size) : real_read(fd, to, size);
}

EXPORTED ssize_t __read_chk(int fd, void *to, size_t size, size_t room)
{
    return is_virtual_device(fd) && size <= room ? read_device(fd, to, size)
                                                 : real_read_chk(fd, to, size, room);
}

EXPORTED ssize_t write(int fd, const void *from, size_t size)
{
    return is_virtual_device(fd) ? write_device(fd, const_cast<void *>(from), size)
                                 : real_write(fd, from, size);
}

EXPORTED ssize_t readv(int fd, const iovec *buffers, int count)
{
    return is_virtual_device(fd) ? for_each(fd, buffers, count, read_device)
                                 : real_readv(fd, buffers, count);
}

EXPORTED ssize_t writev(int fd, const iovec *buffers, int count)
{
    return is_virtual_device(fd) ? for_each(fd, buffers, count, write_device)
                                 : real_writev(fd, buffers, count);
}

// There are no places in the device.

EXPORTED ssize_t pread(int fd, void *to, size_t size, off_t place)
{
    return is_virtual_device(fd) ? refuse(ESPIPE) : real_pread(fd, to, size, place);
}

EXPORTED ssize_t pread64(int fd, void *to, size_t size, off64_t place)
{
    return is_virtual_device(fd) ? refuse(ESPIPE) : real_pread64(fd, to, size, place);
}

EXPORTED ssize_t pwrite(int fd, const void *from, size_t size, off_t place)
{
    return is_virtual_device(fd) ? refuse(ESPIPE) : real_pwrite(fd, from, size, place);
}

EXPORTED ssize_t pwrite64(int fd, const void *from, size_t size, off64_t place)
{
    return is_virtual_device(fd) ? refuse(ESPIPE) : real_pwrite64(fd, from, size, place);
}
