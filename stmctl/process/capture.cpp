// Captures standard error in a file without a name.
#include "stmctl/process/capture.hpp"

#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace stmctl
{

namespace
{

// The module ends the process when it cannot open or attach. Its reason must not be lost, but
// objects are not destroyed in that case.
std::atomic<Capture *> current = nullptr; // for signal handlers, too

void pass_on_at_exit()
{
    if (Capture *capture = current) {
        capture->~Capture();
    }
}

} // namespace

Capture::Capture()
    : caught_(memfd_create("stmctl", MFD_CLOEXEC)),
      real_errors_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3))
{
    static const int registered = std::atexit(pass_on_at_exit);
    (void)registered;
    // In append mode, so that writing starts at the beginning again after a take.
    if (caught_ < 0 || real_errors_ < 0 || fcntl(caught_, F_SETFL, O_APPEND) != 0 ||
        dup2(caught_, STDERR_FILENO) < 0) {
        throw Failure(ExitStatus::failed,
                      fmt::format("cannot capture standard error: {}", strerror(errno)));
    }
    current = this;
}

Capture::~Capture()
{
    current = nullptr;
    const std::string text = take();
    dup2(real_errors_, STDERR_FILENO);
    close(caught_);
    close(real_errors_);
    if (!text.empty() && write(STDERR_FILENO, text.data(), text.size()) < 0) {
        // There is nobody left to inform.
    }
}

std::string Capture::take()
{
    std::string text;
    char piece[4096];
    lseek(caught_, 0, SEEK_SET);
    for (ssize_t size = 0; (size = read(caught_, piece, sizeof(piece))) > 0;) {
        text.append(piece, static_cast<size_t>(size));
    }
    if (ftruncate(caught_, 0) != 0) {
        // Reporting it twice is better than not at all.
    }
    return text;
}

int error_descriptor()
{
    const Capture *capture = current;
    return capture == nullptr ? STDERR_FILENO : capture->real_errors();
}

} // namespace stmctl
