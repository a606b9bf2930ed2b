// Checked copies from and to a program's memory.
#include "simulator/driver/user_memory.hpp"

#include <sys/mman.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
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

// The process's number, which the C library asks the kernel for each time. It is kept on a page that
// the kernel empties in a child, however that was forked; where it does not know such pages, as
// under an emulator, it is asked for each time.
pid_t own_number()
{
    static const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    static std::atomic<pid_t> *const kept = [] {
        void *mapped =
            mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        const bool emptied = mapped != MAP_FAILED && madvise(mapped, page, MADV_WIPEONFORK) == 0;
        return emptied ? static_cast<std::atomic<pid_t> *>(mapped) : nullptr;
    }();
    if (kept == nullptr) {
        return getpid();
    }
    pid_t number = kept->load(std::memory_order_relaxed);
    if (number == 0) {
        number = getpid();
        kept->store(number, std::memory_order_relaxed);
    }
    return number;
}

// Where the kernel does not offer such copies, as under an emulator, the bytes are copied
// unchecked.
constexpr ssize_t NOT_OFFERED = -1;

// Returns how many bytes were copied, up to the first that cannot be.
ssize_t checked_copy(CopyCall *call, std::span<const iovec> own, std::span<const iovec> others)
{
    const ssize_t copied =
        call(own_number(), own.data(), own.size(), others.data(), others.size(), 0);
    if (copied >= 0) {
        return copied;
    }
    return errno == ENOSYS || errno == EPERM ? NOT_OFFERED : 0;
}

} // namespace

size_t copy_pieces_from_user(std::span<const UserPiece> pieces)
{
    iovec own[MOST_PIECES];
    iovec others[MOST_PIECES];
    for (size_t i = 0; i < pieces.size(); ++i) {
        own[i] = {pieces[i].to, pieces[i].size};
        others[i] = {pointer(pieces[i].user_address), pieces[i].size};
    }
    ssize_t copied = checked_copy(process_vm_readv, {own, pieces.size()}, {others, pieces.size()});
    if (copied == NOT_OFFERED) {
        if (others[0].iov_base == nullptr) {
            return 0;
        }
        memcpy(own[0].iov_base, others[0].iov_base, own[0].iov_len);
        return 1; // of the others nobody knows whether they are there
    }
    size_t whole = 0;
    while (whole < pieces.size() && copied >= static_cast<ssize_t>(own[whole].iov_len)) {
        copied -= static_cast<ssize_t>(own[whole].iov_len);
        ++whole;
    }
    return whole;
}

bool copy_from_user(void *to, uint64_t user_address, size_t size)
{
    const UserPiece piece = {to, user_address, size};
    return copy_pieces_from_user({&piece, 1}) == 1;
}

bool copy_to_user(uint64_t user_address, const void *from, size_t size)
{
    void *to = pointer(user_address);
    const iovec own = {const_cast<void *>(from), size};
    const iovec others = {to, size};
    const ssize_t copied = checked_copy(process_vm_writev, {&own, 1}, {&others, 1});
    if (copied == NOT_OFFERED && to != nullptr) {
        memcpy(to, from, size);
        return true;
    }
    return copied == static_cast<ssize_t>(size);
}

} // namespace simulator
