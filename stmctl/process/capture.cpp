// Catches what goes to standard error, in a file that has no name.
#include "stmctl/process/capture.hpp"

#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace stmctl
{

namespace
{

constexpr int NONE = -1;

int caught = NONE;      // the file
int real_errors = NONE; // a copy of the descriptor that standard error had

std::string take_caught()
{
    std::string text;
    char piece[4096];
    lseek(caught, 0, SEEK_SET);
    for (ssize_t size = 0; (size = read(caught, piece, sizeof(piece))) > 0;) {
        text.append(piece, static_cast<size_t>(size));
    }
    if (ftruncate(caught, 0) != 0) {
        // Told twice is better than not at all.
    }
    return text;
}

void give_back()
{
    if (caught == NONE) {
        return;
    }
    const std::string text = take_caught();
    dup2(real_errors, STDERR_FILENO);
    close(caught);
    close(real_errors);
    caught = real_errors = NONE;
    if (!text.empty() && write(STDERR_FILENO, text.data(), text.size()) < 0) {
        // There is nobody left to tell.
    }
}

} // namespace

Capture::Capture()
{
    // The module ends the process when it cannot open or attach; its reason must not be lost.
    static const int registered = std::atexit(give_back);
    (void)registered;
    caught = memfd_create("stmctl", MFD_CLOEXEC);
    real_errors = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    // Appending, so that what is written after a take stands at the start again.
    if (caught < 0 || real_errors < 0 || fcntl(caught, F_SETFL, O_APPEND) != 0 ||
        dup2(caught, STDERR_FILENO) < 0) {
        throw Failure(ExitStatus::failed,
                      fmt::format("cannot catch standard error: {}", strerror(errno)));
    }
}

Capture::~Capture()
{
    give_back();
}

std::string Capture::take()
{
    return take_caught();
}

int error_descriptor()
{
    return real_errors == NONE ? STDERR_FILENO : real_errors;
}

} // namespace stmctl
