// Checked copies from and to a program's memory.
#include "simulator/user_memory.hpp"

#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace simulator
{

namespace
{

using CopyCall = ssize_t(pid_t, const iovec *, unsigned long, const iovec *, unsigned long,
                         unsigned long) noexcept;

void *pointer(uint64_t user_address)
{
    return reinterpret_cast<void *>(static_cast<uintptr_t>(user_address));
}

// Where the kernel does not offer such copies, as under an emulator, the answer is "not refused":
// the bytes are then copied unchecked.
enum class Copy { done, refused, not_offered };

Copy checked_copy(CopyCall *call, void *own, void *others, size_t size)
{
    const iovec local = {own, size};
    const iovec remote = {others, size};
    const ssize_t copied = call(getpid(), &local, 1, &remote, 1, 0);
    if (copied == static_cast<ssize_t>(size)) {
        return Copy::done;
    }
    return copied < 0 && (errno == ENOSYS || errno == EPERM) ? Copy::not_offered : Copy::refused;
}

} // namespace

bool copy_from_user(void *to, uint64_t user_address, size_t size)
{
    void *from = pointer(user_address);
    const Copy copy = checked_copy(process_vm_readv, to, from, size);
    if (copy == Copy::not_offered && from != nullptr) {
        memcpy(to, from, size);
        return true;
    }
    return copy == Copy::done;
}

bool copy_to_user(uint64_t user_address, const void *from, size_t size)
{
    void *to = pointer(user_address);
    const Copy copy = checked_copy(process_vm_writev, const_cast<void *>(from), to, size);
    if (copy == Copy::not_offered && to != nullptr) {
        memcpy(to, from, size);
        return true;
    }
    return copy == Copy::done;
}

} // namespace simulator
