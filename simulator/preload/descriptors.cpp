// This program's open descriptors of the device.
#include "simulator/preload/descriptors.hpp"

#include "simulator/preload/real_calls.hpp"
#include "simulator/store/open_descriptors.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace simulator
{

namespace
{

// All that can be read have the first byte in common. A lock that is not shared needs no permission to
// read: one that can only be written has a byte of its own.
constexpr off64_t SHARED_BYTE = 0;
constexpr off64_t FIRST_OWN_BYTE = 1;

// Not this library's own, which knows nothing of these locks.
constinit RealCall<int(int, int, ...)> real_fcntl64("fcntl64");
constinit RealCall<off64_t(int, off64_t, int)> real_lseek64("lseek64");

bool take(int fd, int kind, off64_t byte)
{
    flock64 lock = lock_of_descriptors(kind, byte, 1);
    return real_fcntl64(fd, F_OFD_SETLK, &lock) == 0;
}

} // namespace

// The program's own locks are behind these, also those that begin where it reads and writes.
void note_descriptor(int fd)
{
    if (fd < 0) {
        return;
    }
    (void)real_lseek64(fd, PLACES_OF_DESCRIPTORS, SEEK_SET);
    if (take(fd, F_RDLCK, SHARED_BYTE)) {
        return;
    }
    for (off64_t byte = FIRST_OWN_BYTE; byte < PLACES_OF_DESCRIPTORS; ++byte) {
        if (take(fd, F_WRLCK, byte) || errno != EAGAIN) {
            return;
        }
    }
}

} // namespace simulator
