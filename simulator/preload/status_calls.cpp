// Intercepts the calls that show the status of a file: the device's stand-in is shown as the device.
#include "simulator/preload/device_status.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>

namespace
{

using simulator::is_virtual_device;
using simulator::Named;
using simulator::RealCall;
using simulator::status_by_path;
using simulator::status_from;
using simulator::status_of_descriptor;
using simulator::virtual_name;

using Status = struct stat;
using Status64 = struct stat64;

constinit RealCall<int(const char *, Status *)> real_stat("stat");
constinit RealCall<int(const char *, Status *)> real_lstat("lstat");
constinit RealCall<int(int, Status *)> real_fstat("fstat");
constinit RealCall<int(int, const char *, Status *, int)> real_fstatat("fstatat");
constinit RealCall<int(const char *, Status64 *)> real_stat64("stat64");
constinit RealCall<int(const char *, Status64 *)> real_lstat64("lstat64");
constinit RealCall<int(int, Status64 *)> real_fstat64("fstat64");
constinit RealCall<int(int, const char *, Status64 *, int)> real_fstatat64("fstatat64");
constinit RealCall<int(int, const char *, int, unsigned, struct statx *)> real_statx("statx");

void show_device_in(struct statx &status)
{
    status.stx_mode = static_cast<uint16_t>((status.stx_mode & ~S_IFMT) | S_IFCHR);
    status.stx_rdev_major = simulator::MAJOR;
    status.stx_rdev_minor = simulator::MINOR;
    status.stx_size = 0;
    status.stx_blocks = 0;
}

} // namespace

EXPORTED int stat(const char *path, Status *status) noexcept
{
    return status_by_path<Status>(path, true, status, real_stat);
}

EXPORTED int stat64(const char *path, Status64 *status) noexcept
{
    return status_by_path<Status64>(path, true, status, real_stat64);
}

EXPORTED int lstat(const char *path, Status *status) noexcept
{
    return status_by_path<Status>(path, false, status, real_lstat);
}

EXPORTED int lstat64(const char *path, Status64 *status) noexcept
{
    return status_by_path<Status64>(path, false, status, real_lstat64);
}

EXPORTED int fstat(int fd, Status *status) noexcept
{
    return status_of_descriptor<Status>(fd, status, real_fstat);
}

EXPORTED int fstat64(int fd, Status64 *status) noexcept
{
    return status_of_descriptor<Status64>(fd, status, real_fstat64);
}

EXPORTED int fstatat(int directory, const char *path, Status *status, int flags) noexcept
{
    return status_from<Status>(directory, path, status, flags, real_fstatat);
}

EXPORTED int fstatat64(int directory, const char *path, Status64 *status, int flags) noexcept
{
    return status_from<Status64>(directory, path, status, flags, real_fstatat64);
}

EXPORTED int statx(int directory, const char *path, int flags, unsigned wanted,
                   struct statx *status) noexcept
{
    const Named named = virtual_name(directory, path, (flags & AT_SYMLINK_NOFOLLOW) == 0);
    const auto look = [&](const char *name) {
        return real_statx(directory, name, flags, wanted, status);
    };
    const int result =
        named == Named::other ? look(path) : simulator::look_at_stand_in(named, look);
    const bool is_descriptor = (flags & AT_EMPTY_PATH) != 0 && is_virtual_device(directory);
    if (result == 0 && (named == Named::device || is_descriptor)) {
        show_device_in(*status);
    }
    return result;
}
