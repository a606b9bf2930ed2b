// The script of the shared memory.
#include "tests/platform/shared_memory.hpp"

#include <cerrno>
#include <cstdio>

namespace
{

int fail_with(int error)
{
    errno = error;
    return -1;
}

std::string octal(int number)
{
    char text[16];
    snprintf(text, sizeof(text), "%#o", static_cast<unsigned>(number));
    return text;
}

} // namespace

int ReplacedSharedMemory::on_shmget(key_t key, size_t size, int flags)
{
    note("shmget " + std::to_string(key) + " " + std::to_string(size) + " " + octal(flags));
    return shmget_error == 0 ? segment_id : fail_with(shmget_error);
}

void *ReplacedSharedMemory::on_shmat(int id, const void *address, int flags)
{
    note("shmat " + std::to_string(id) + (address == nullptr ? "" : " at an address") +
         (flags == 0 ? "" : " flags " + octal(flags)));
    if (shmat_error != 0) {
        errno = shmat_error;
        return reinterpret_cast<void *>(-1);
    }
    return segment.data();
}

// As the kernel tells it: the last process to attach was this one.
int ReplacedSharedMemory::on_shmctl(int id, int command, shmid_ds *status)
{
    const std::string name = command == IPC_STAT ? "IPC_STAT" : std::to_string(command);
    note("shmctl " + std::to_string(id) + " " + name);
    if (shmctl_error != 0) {
        return fail_with(shmctl_error);
    }
    if (command == IPC_STAT) {
        *status = {};
        status->shm_segsz = segment.size();
        status->shm_cpid = creator_pid;
        status->shm_lpid = own_pid;
        status->shm_nattch = 1;
    }
    return 0;
}

pid_t ReplacedSharedMemory::on_getpid()
{
    note("getpid");
    return own_pid;
}
