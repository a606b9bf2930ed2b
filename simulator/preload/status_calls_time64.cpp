// Intercepts the calls that show the status of a file in 32-bit programs that were built for times beyond
// 2038: the C library's headers give these functions the names that such programs call.
#if __SIZEOF_LONG__ == 4
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
#undef _FILE_OFFSET_BITS
#define _FILE_OFFSET_BITS 64
#define _TIME_BITS        64
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

#include "simulator/preload/device_status.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>

namespace
{

using simulator::RealCall;
using simulator::status_by_path;
using simulator::status_from;
using simulator::status_of_descriptor;

using Status = struct stat;

constinit RealCall<int(const char *, Status *)> real_stat("__stat64_time64");
constinit RealCall<int(const char *, Status *)> real_lstat("__lstat64_time64");
constinit RealCall<int(int, Status *)> real_fstat("__fstat64_time64");
constinit RealCall<int(int, const char *, Status *, int)> real_fstatat("__fstatat64_time64");

} // namespace

EXPORTED int stat(const char *path, Status *status) noexcept
{
    return status_by_path<Status>(path, true, status, real_stat);
}

EXPORTED int lstat(const char *path, Status *status) noexcept
{
    return status_by_path<Status>(path, false, status, real_lstat);
}

EXPORTED int fstat(int fd, Status *status) noexcept
{
    return status_of_descriptor<Status>(fd, status, real_fstat);
}

EXPORTED int fstatat(int directory, const char *path, Status *status, int flags) noexcept
{
    return status_from<Status>(directory, path, status, flags, real_fstatat);
}

#endif
