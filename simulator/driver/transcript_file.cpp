// The file to which a program's exchanges are appended.
#include "simulator/driver/transcript_file.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace simulator
{

namespace
{

// Writes all of it, however the descriptor is set up and however often a signal interrupts.
bool write_all(int fd, const char *bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(fd, bytes, size);
        if (written >= 0) {
            bytes += written;
            size -= static_cast<size_t>(written);
        } else if (errno == EAGAIN) {
            pollfd writable = {fd, POLLOUT, 0};
            ::poll(&writable, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

std::string add_to_transcript(const std::string &path, const std::string &line)
{
    const bool own_file = path != "-";
    const int fd = own_file ? ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666)
                            : STDERR_FILENO;
    const bool written = fd >= 0 && write_all(fd, line.data(), line.size());
    const int error = errno;
    if (own_file && fd >= 0) {
        ::close(fd);
    }
    return written ? std::string() : path + ": " + strerror(error);
}

} // namespace simulator
