// Whether a program that once was here is still there.
#include "simulator/store/program_life.hpp"

#include "simulator/words/text.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>

namespace simulator
{

namespace
{

struct Status {
    bool has_ended;
    uint64_t start;
};

// The kernel's line about a process: its number, its name in brackets, which may contain anything, its
// state, and as the eighteenth and the twentieth word from there its number of threads and its start. The
// state is that of its first thread, which may end before others.
std::optional<Status> parse_status(const std::string &line)
{
    const size_t name_end = line.rfind(')');
    if (name_end == std::string::npos) {
        return std::nullopt;
    }
    constexpr int BEFORE_THREADS = 17;
    std::istringstream words(line.substr(name_end + 1));
    std::string state;
    words >> state;
    std::string skipped;
    for (int i = 1; i < BEFORE_THREADS; ++i) {
        words >> skipped;
    }
    int threads = 0;
    uint64_t start = 0;
    words >> threads >> skipped >> start;
    const bool has_ended = state == "X" || (state == "Z" && threads <= 1);
    return words ? std::optional(Status{has_ended, start}) : std::nullopt;
}

// The dot keeps an emulator from answering in the kernel's place for its own program.
std::optional<Status> status_of(const std::string &process)
{
    const std::string path = "/proc/./" + process + "/stat";
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return std::nullopt;
    }
    char line[1024];
    const ssize_t size = read(fd, line, sizeof(line));
    close(fd);
    return parse_status(std::string(line, static_cast<size_t>(size < 0 ? 0 : size)));
}

} // namespace

ProgramLife this_program()
{
    const std::optional<Status> status = status_of("self");
    return {static_cast<uint32_t>(getpid()), 0, status ? status->start : 0};
}

bool is_alive(const ProgramLife &program)
{
    const auto process = static_cast<pid_t>(program.process);
    if (process <= 0 || (kill(process, 0) != 0 && errno == ESRCH)) {
        return false;
    }
    const std::optional<Status> status = status_of(text("%d", process));
    if (!status) {
        return program.start == 0;
    }
    return !status->has_ended && (program.start == 0 || status->start == program.start);
}

} // namespace simulator
