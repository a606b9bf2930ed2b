// Other processes, as /proc shows them.
#include "stmctl/module/processes.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace stmctl
{

namespace
{

namespace fs = std::filesystem;

// The words of a process's command line, separated by blanks, the first one without its path.
std::string command_of(pid_t process)
{
    std::ifstream file(fmt::format("/proc/{}/cmdline", process));
    std::string words;
    std::getline(file, words, '\n');
    while (words.ends_with('\0')) {
        words.pop_back();
    }
    std::ranges::replace(words, '\0', ' ');
    const size_t name = words.find(' ');
    const size_t slash = words.rfind('/', std::min(name, words.size()));
    return slash == std::string::npos ? words : words.substr(slash + 1);
}

// The number that a file name consists of; 0 if it is not a number.
int number_of(const fs::path &path)
{
    const std::string name = path.filename().string();
    int number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() && end == name.data() + name.size() ? number : 0;
}

// "flags: 0104002", octal, in the file about a descriptor.
bool only_waits(pid_t process, const fs::path &descriptor)
{
    std::ifstream file(fmt::format("/proc/{}/fdinfo/{}", process, descriptor.filename().string()));
    for (std::string word; file >> word;) {
        int flags = 0;
        if (word == "flags:" && file >> word) {
            std::from_chars(word.data(), word.data() + word.size(), flags, 8);
            return (flags & (O_ACCMODE | O_NONBLOCK)) == WAITING_FLAGS;
        }
    }
    return false;
}

enum class Use { none, talks, hidden };

Use use_of(pid_t process, const struct stat &device)
{
    std::error_code error;
    const fs::directory_iterator folder(fmt::format("/proc/{}/fd", process), error);
    if (error) {
        return error == std::errc::permission_denied ? Use::hidden : Use::none;
    }
    for (auto entry = fs::begin(folder); entry != fs::end(folder); entry.increment(error)) {
        struct stat file = {};
        const bool same = stat(entry->path().c_str(), &file) == 0 && file.st_dev == device.st_dev &&
                          file.st_ino == device.st_ino;
        if (same && !only_waits(process, entry->path())) {
            return Use::talks;
        }
    }
    return Use::none;
}

} // namespace

std::string process_words(pid_t process)
{
    return fmt::format("process {} ({})", process, command_of(process));
}

std::string DeviceUsers::words() const
{
    std::string words;
    for (const pid_t process : processes) {
        words += (words.empty() ? "" : " and ") + process_words(process);
    }
    return words;
}

std::string DeviceUsers::clause(const char *what) const
{
    return fmt::format("{} {} {} open", words(), processes.size() == 1 ? "has" : "have", what);
}

std::string DeviceUsers::suspicion() const
{
    return fmt::format("another program may have used the device{}",
                       processes.empty() ? "" : ": " + clause("it"));
}

DeviceUsers other_users_of(int descriptor)
{
    DeviceUsers users;
    struct stat device = {};
    std::error_code error;
    fs::directory_iterator folder("/proc", error);
    // The first process always exists, but may be hidden from other users.
    users.some_hidden = error || access("/proc/1", F_OK) != 0;
    if (fstat(descriptor, &device) != 0 || error) {
        return users;
    }
    for (; folder != fs::directory_iterator(); folder.increment(error)) {
        const pid_t process = number_of(folder->path());
        if (process == 0 || process == getpid()) {
            continue;
        }
        const Use use = use_of(process, device);
        users.some_hidden = users.some_hidden || use == Use::hidden;
        if (use == Use::talks) {
            users.processes.push_back(process);
        }
    }
    return users;
}

} // namespace stmctl
