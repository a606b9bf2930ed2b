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
    char state;
    uint64_t start;
};

// The kernel's line about a process: its number, its name in brackets, which may contain anything, its
// state, and its start as the twentieth word from there.
std::optional<Status> parse_status(const std::string &line)
{
    const size_t name_end = line.rfind(')');
    if (name_end == std::string::npos) {
        return std::nullopt;
    }
    constexpr int BEFORE_START = 19;
    std::istringstream words(line.substr(name_end + 1));
    std::string state;
    words >> state;
    std::string skipped;
    for (int i = 1; i < BEFORE_START; ++i) {
        words >> skipped;
    }
    uint64_t start = 0;
    words >> start;
    return words ? std::optional(Status{state.front(), start}) : std::nullopt;
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
    if (!status || program.start == 0) {
        return !status || (status->state != 'Z' && status->state != 'X');
    }
    return status->state != 'Z' && status->state != 'X' && status->start == program.start;
}

} // namespace simulator
