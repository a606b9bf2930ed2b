// Intercepts the calls that ask whether a file may be used, and for its whole name.
#include "simulator/preload/device_status.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace
{

using simulator::DEVICE;
using simulator::look_at_stand_in;
using simulator::Named;
using simulator::RealCall;
using simulator::virtual_name;

constinit RealCall<int(const char *, int)> real_access("access");
constinit RealCall<int(const char *, int)> real_euidaccess("euidaccess");
constinit RealCall<int(int, const char *, int, int)> real_faccessat("faccessat");
constinit RealCall<char *(const char *, char *)> real_realpath("realpath");

int access_as_effective_user(const char *path, int how)
{
    const Named named = virtual_name(AT_FDCWD, path);
    return named == Named::other ? real_euidaccess(path, how)
                                 : look_at_stand_in(named, [how](const char *stand_in) {
                                       return real_euidaccess(stand_in, how);
                                   });
}

} // namespace

EXPORTED int access(const char *path, int how) noexcept
{
    const Named named = virtual_name(AT_FDCWD, path);
    return named == Named::other ? real_access(path, how)
                                 : look_at_stand_in(named, [how](const char *stand_in) {
                                       return real_access(stand_in, how);
                                   });
}

EXPORTED int faccessat(int directory, const char *path, int how, int flags) noexcept
{
    const Named named = virtual_name(directory, path, (flags & AT_SYMLINK_NOFOLLOW) == 0);
    return named == Named::other ? real_faccessat(directory, path, how, flags)
                                 : look_at_stand_in(named, [how, flags](const char *stand_in) {
                                       return real_faccessat(AT_FDCWD, stand_in, how, flags);
                                   });
}

EXPORTED int euidaccess(const char *path, int how) noexcept
{
    return access_as_effective_user(path, how);
}

EXPORTED int eaccess(const char *path, int how) noexcept
{
    return access_as_effective_user(path, how);
}

EXPORTED char *realpath(const char *path, char *whole) noexcept
{
    const Named named = virtual_name(AT_FDCWD, path);
    if (named == Named::other) {
        return real_realpath(path, whole);
    }
    if (look_at_stand_in(named, [](const char *) { return 0; }) != 0) {
        return nullptr;
    }
    return whole != nullptr ? strcpy(whole, DEVICE) : strdup(DEVICE);
}
