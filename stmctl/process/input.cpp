// Reads all of a file, a pipe or standard input.
#include "stmctl/process/input.hpp"

#include "stmctl/process/failure.hpp"
#include "stmctl/process/stop.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace stmctl
{

namespace
{

[[noreturn]] void refuse(const std::string &path)
{
    throw Failure(ExitStatus::failed, fmt::format("{}: {}", input_name(path), strerror(errno)));
}

class Descriptor
{
  public:
    // Without O_NONBLOCK, opening a pipe that has no writer would block.
    explicit Descriptor(const std::string &path)
        : number_(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)
                              : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
        if (number_ < 0) {
            refuse(path);
        }
    }
    ~Descriptor() { close(number_); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int number() const { return number_; }

  private:
    int number_;
};

} // namespace

std::string input_name(const std::string &path)
{
    return path == "-" ? "standard input" : path;
}

std::string read_whole(const std::string &path, size_t most)
{
    const Descriptor input(path);
    std::string content;
    while (content.size() <= most) {
        if (!wait_for_input(input.number())) {
            throw Failure(ExitStatus::stopped,
                          fmt::format("{}: stopped while it was being read", input_name(path)));
        }
        char piece[4096];
        const size_t room = most - content.size();
        const size_t size = room < sizeof(piece) ? room + 1 : sizeof(piece);
        const ssize_t came = read(input.number(), piece, size);
        if (came == 0) {
            break;
        }
        if (came < 0 && errno != EAGAIN && errno != EINTR) {
            refuse(path);
        }
        content.append(piece, static_cast<size_t>(std::max<ssize_t>(came, 0)));
    }
    return content;
}

} // namespace stmctl
