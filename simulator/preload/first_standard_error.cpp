// Standard error as it was when the program started, recognised by its file: a descriptor of our
// own would get in the program's way.
#include "simulator/preload/first_standard_error.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace simulator
{

namespace
{

struct stat first = {};
bool is_known = false;

[[gnu::constructor]] void remember_standard_error()
{
    is_known = fstat(STDERR_FILENO, &first) == 0;
}

bool is_first(int descriptor)
{
    struct stat file = {};
    return fstat(descriptor, &file) == 0 && file.st_dev == first.st_dev &&
           file.st_ino == first.st_ino && (fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_RDONLY;
}

} // namespace

int first_standard_error()
{
    namespace fs = std::filesystem;
    if (!is_known || is_first(STDERR_FILENO)) {
        return STDERR_FILENO;
    }
    std::error_code error;
    for (fs::directory_iterator entry("/proc/self/fd", error); entry != fs::directory_iterator();
         entry.increment(error)) {
        const long descriptor = strtol(entry->path().filename().c_str(), nullptr, 10);
        if (is_first(static_cast<int>(descriptor))) {
            return static_cast<int>(descriptor);
        }
    }
    return STDERR_FILENO;
}

} // namespace simulator
