// Whether a path names the device. There may be no such file on this machine, so links to it are followed
// here, and not by the kernel.
#include "simulator/preload/device_name.hpp"

#include "simulator/preload/driver_call.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>

namespace simulator
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view DEVICE_FILE = "spidev1.0";
constexpr int MOST_LINKS = 40; // as the kernel follows

// The absolute path in its normal form.
fs::path whole_path(int directory, std::string_view path)
{
    std::error_code error;
    fs::path base = "/proc/self/cwd";
    if (directory != AT_FDCWD) {
        base = "/proc/self/fd/" + std::to_string(directory);
    }
    return (fs::read_symlink(base, error) / path).lexically_normal();
}

bool is_device(int directory, std::string_view path)
{
    return path == DEVICE || (path.ends_with(DEVICE_FILE) && whole_path(directory, path) == DEVICE);
}

// Where a link leads, seen from the same folder; empty for what is none.
std::string link_target(int directory, const std::string &path)
{
    char target[PATH_MAX];
    const ssize_t length = readlinkat(directory, path.c_str(), target, sizeof(target));
    if (length <= 0) {
        return {};
    }
    const std::string_view words(target, static_cast<size_t>(length));
    return words.front() == '/' ? std::string(words)
                                : (fs::path(path).parent_path() / words).string();
}

bool leads_to_device(int directory, const char *path)
{
    std::string target = link_target(directory, path);
    for (int links = 0; links < MOST_LINKS && !target.empty(); ++links) {
        if (is_device(directory, target)) {
            return true;
        }
        target = link_target(directory, target);
    }
    return false;
}

// Nearly all paths are no links, and need no memory to be known as such.
bool is_link(int directory, const char *path)
{
    char byte = 0;
    return readlinkat(directory, path, &byte, 1) > 0;
}

bool is_below_device(int directory, std::string_view path)
{
    for (size_t at = path.find(DEVICE_FILE); at != std::string_view::npos;
         at = path.find(DEVICE_FILE, at + 1)) {
        const size_t end = at + DEVICE_FILE.size();
        if (end < path.size() && path[end] == '/' && is_device(directory, path.substr(0, end))) {
            return true;
        }
    }
    return false;
}

Named look_at(int directory, const char *path, bool follows_link)
{
    if (path == nullptr || *path == '\0') {
        return Named::other;
    }
    if (is_device(directory, path)) {
        return Named::device;
    }
    if (is_below_device(directory, path)) {
        return Named::below_device;
    }
    return follows_link && is_link(directory, path) && leads_to_device(directory, path)
               ? Named::device
               : Named::other;
}

} // namespace

Named what_is_named(int directory, const char *path, bool follows_link)
{
    if (is_in_driver_call()) {
        return Named::other;
    }
    const int errno_before = errno;
    const Named named = look_at(directory, path, follows_link);
    errno = errno_before;
    return named;
}

} // namespace simulator
