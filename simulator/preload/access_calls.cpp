// Intercepts the calls that ask whether a file may be used, for its whole name and for its attributes.
#include "simulator/preload/device_status.hpp"
#include "simulator/preload/real_calls.hpp"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
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
constinit RealCall<ssize_t(const char *, const char *, void *, size_t)> real_getxattr("getxattr");
constinit RealCall<ssize_t(const char *, const char *, void *, size_t)> real_lgetxattr("lgetxattr");

int access_as_effective_user(const char *path, int how)
{
    const Named named = virtual_name(AT_FDCWD, path);
    return named == Named::other ? real_euidaccess(path, how)
                                 : look_at_stand_in(named, [how](const char *stand_in) {
                                       return real_euidaccess(stand_in, how);
                                   });
}

// A device node has no attributes beside those that everything has.
int refuse_attribute(Named named)
{
    const int found = look_at_stand_in(named, [](const char *) { return 0; });
    return found == 0 ? simulator::refuse(ENODATA) : found;
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

EXPORTED ssize_t getxattr(const char *path, const char *name, void *value, size_t size) noexcept
{
    const Named named = virtual_name(AT_FDCWD, path);
    return named == Named::other ? real_getxattr(path, name, value, size) : refuse_attribute(named);
}

EXPORTED ssize_t lgetxattr(const char *path, const char *name, void *value, size_t size) noexcept
{
    const Named named = virtual_name(AT_FDCWD, path, false);
    return named == Named::other ? real_lgetxattr(path, name, value, size)
                                 : refuse_attribute(named);
}
