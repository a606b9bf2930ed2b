// The open descriptors of a board's device, in all programs.
#include "simulator/store/open_descriptors.hpp"

#include <sys/syscall.h>
#include <unistd.h>

namespace simulator
{

struct flock64 lock_of_descriptors(int kind, off64_t from, off64_t length)
{
    struct flock64 lock = {};
    lock.l_type = static_cast<short>(kind);
    lock.l_whence = SEEK_SET;
    lock.l_start = from;
    lock.l_len = length;
    return lock;
}

bool has_descriptors(const std::string &stand_in)
{
    const int fd = open(stand_in.c_str(), O_RDONLY | O_CLOEXEC);
    struct flock64 lock = lock_of_descriptors(F_WRLCK, 0, PLACES_OF_DESCRIPTORS);
    const bool found = fd >= 0 && fcntl64(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    if (fd >= 0) {
        (void)syscall(SYS_close, fd); // close may be intercepted by others
    }
    return found;
}

} // namespace simulator
