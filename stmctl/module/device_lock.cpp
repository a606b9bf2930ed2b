// An advisory lock on the device, and who holds it.
#include "stmctl/module/device_lock.hpp"

#include "stmctl/module/processes.hpp"
#include "stmctl/output/output.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace stmctl
{

namespace
{

// "1: FLOCK  ADVISORY  WRITE 1234 08:01:5678 0 EOF", for the file with this device and number.
long holder_in(const std::string &line, const std::string &file)
{
    std::istringstream words(line);
    std::string number;
    std::string kind;
    std::string skipped;
    std::string locked;
    long pid = 0;
    words >> number >> kind >> skipped >> skipped >> pid >> locked;
    return words && kind == "FLOCK" && locked == file ? pid : 0;
}

} // namespace

std::string lock_holder(int descriptor)
{
    struct stat status = {};
    fstat(descriptor, &status);
    const std::string file =
        fmt::format("{:02x}:{:02x}:{}", major(status.st_dev), minor(status.st_dev), status.st_ino);
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        if (const long pid = holder_in(line, file); pid > 0) {
            return process_words(static_cast<pid_t>(pid));
        }
    }
    return "another process";
}

bool try_lock(int descriptor, const char *name)
{
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        return true;
    }
    if (errno != EWOULDBLOCK && errno != EINTR) {
        throw Failure(ExitStatus::failed, fmt::format("cannot lock {}: {}", name, strerror(errno)));
    }
    return false;
}

// Waiting in flock would miss an interrupt that comes just before.
bool wait_for_lock(int descriptor, const char *name, const Pause &pause)
{
    constexpr std::chrono::milliseconds BETWEEN_TRIES(100);
    while (!try_lock(descriptor, name)) {
        if (!pause(BETWEEN_TRIES)) {
            return false;
        }
    }
    return true;
}

void lock_device(int descriptor, const char *name, bool wait)
{
    if (try_lock(descriptor, name)) {
        return;
    }
    if (!wait) {
        throw Failure(ExitStatus::failed,
                      fmt::format("{} is in use by {}; use --wait to wait for it", name,
                                  lock_holder(descriptor)));
    }
    say(fmt::format("waiting for {}", lock_holder(descriptor)));
    if (!wait_for_lock(descriptor, name, wait_unless_stopped)) {
        throw Failure(ExitStatus::stopped, fmt::format("stopped while waiting for {}", name));
    }
}

} // namespace stmctl
