// A file that is written whole or stays as it was.
#include "stmctl/output/whole_file.hpp"

#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace stmctl
{

namespace
{

[[noreturn]] void refuse(const std::string &path, int error)
{
    throw Failure(ExitStatus::failed, fmt::format("cannot write '{}': {}", path, strerror(error)));
}

std::string folder_of(const std::string &path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Links are followed, because they must not be replaced.
std::string real_path(const std::string &path)
{
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) != nullptr ? resolved : path;
}

bool is_replaced(const std::string &path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

// Returns an errno, or 0 if all of it is in the file.
int write_and_close(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            const int error = errno;
            close(file);
            return error;
        }
        text.remove_prefix(written > 0 ? static_cast<size_t>(written) : 0);
    }
    return close(file) == 0 ? 0 : errno;
}

// Returns an errno, or 0 on success.
int replace(const std::string &path, std::string_view text)
{
    const std::string fresh = fmt::format("{}.{}", path, getpid());
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) {
        return errno;
    }
    struct stat old = {};
    if (stat(path.c_str(), &old) == 0 && fchmod(file, old.st_mode & 07777) != 0) {
        // It is still written, with the permissions of a new file.
    }
    int error = write_and_close(file, text);
    if (error == 0 && rename(fresh.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        unlink(fresh.c_str());
    }
    return error;
}

int write_through(const std::string &path, std::string_view text)
{
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    return file < 0 ? errno : write_and_close(file, text);
}

} // namespace

void expect_writable(const std::string &path)
{
    const std::string real = real_path(path);
    struct stat status = {};
    const bool is_there = stat(real.c_str(), &status) == 0;
    if (is_there && S_ISDIR(status.st_mode)) {
        refuse(path, EISDIR);
    }
    const bool may_write =
        (!is_there || access(real.c_str(), W_OK) == 0) &&
        (!is_replaced(real) || access(folder_of(real).c_str(), W_OK | X_OK) == 0);
    if (!may_write) {
        refuse(path, errno);
    }
}

void write_whole(const std::string &path, std::string_view text)
{
    const std::string real = real_path(path);
    const int error = is_replaced(real) ? replace(real, text) : write_through(real, text);
    if (error != 0) {
        refuse(path, error);
    }
}

} // namespace stmctl
