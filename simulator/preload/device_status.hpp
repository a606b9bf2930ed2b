// What the status of the device's stand-in is made to show: a character device. Its file's numbers stay, by
// which locks and those who have it open are found.
#pragma once

#include "simulator/preload/device_files.hpp"
#include "simulator/preload/device_name.hpp"
#include "simulator/preload/driver_call.hpp"
#include "simulator/preload/program.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>

namespace simulator
{

inline constexpr unsigned MAJOR = 153; // of all spidev devices
inline constexpr unsigned MINOR = 0;

template <typename Status>
void show_device(Status &status)
{
    status.st_mode = (status.st_mode & ~static_cast<mode_t>(S_IFMT)) | S_IFCHR;
    status.st_rdev = makedev(MAJOR, MINOR);
    status.st_size = 0;
    status.st_blocks = 0;
}

// What a call finds out about a file by its name, with the stand-in's name in the place of the device's.
template <typename Look>
int look_at_stand_in(Named named, Look look)
{
    const DriverCall call;
    if (named == Named::below_device) {
        return refuse(ENOTDIR);
    }
    return device_is_there() ? look(device_stand_in().c_str()) : refuse(ENOENT);
}

// The name of the device, as far as it is a virtual one.
inline Named virtual_name(int directory, const char *path, bool follows_link = true)
{
    const Named named = what_is_named(directory, path, follows_link);
    return named != Named::other && leaves_device_real() ? Named::other : named;
}

// The calls, for any kind of status.

template <typename Status>
int status_by_path(const char *path, bool follows_link, Status *status,
                   int (*real)(const char *, Status *))
{
    const Named named = virtual_name(AT_FDCWD, path, follows_link);
    if (named == Named::other) {
        return real(path, status);
    }
    const int result = look_at_stand_in(
        named, [real, status](const char *stand_in) { return real(stand_in, status); });
    if (result == 0) {
        show_device(*status);
    }
    return result;
}

template <typename Status>
int status_of_descriptor(int fd, Status *status, int (*real)(int, Status *))
{
    const int result = real(fd, status);
    if (result == 0 && is_virtual_device(fd)) {
        show_device(*status);
    }
    return result;
}

// Without a path, the descriptor may be the device's instead of a folder's.
template <typename Status>
int status_from(int directory, const char *path, Status *status, int flags,
                int (*real)(int, const char *, Status *, int))
{
    const Named named = virtual_name(directory, path, (flags & AT_SYMLINK_NOFOLLOW) == 0);
    const auto look = [=](const char *name) { return real(directory, name, status, flags); };
    const int result = named == Named::other ? look(path) : look_at_stand_in(named, look);
    const bool is_descriptor = (flags & AT_EMPTY_PATH) != 0 && is_virtual_device(directory);
    if (result == 0 && (named == Named::device || is_descriptor)) {
        show_device(*status);
    }
    return result;
}

} // namespace simulator
