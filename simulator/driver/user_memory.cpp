// Checked copies from and to a program's memory. The kernel is made to look at each page before it is
// touched, by the two calls that do nothing else and are the quickest: one that reads a signal mask,
// and one that writes the signals that are pending. The calls that copy between processes would take
// seven times as long, and an emulator does not offer them.
#include "simulator/driver/user_memory.hpp"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace simulator
{

namespace
{

constexpr size_t MASK_SIZE = 8; // of the kernel's signal masks
constexpr int NO_SUCH_CHANGE = -1;

using Byte = uint8_t;

Byte *pointer(uint64_t user_address)
{
    return reinterpret_cast<Byte *>(static_cast<uintptr_t>(user_address));
}

// The mask around an address, which is on one page.
Byte *mask_around(Byte *at)
{
    return at - reinterpret_cast<uintptr_t>(at) % MASK_SIZE;
}

// A mask is read before the change to be made with it is found to be none. Without a mask nothing
// would be read.
bool is_readable(Byte *at)
{
    Byte *mask = mask_around(at);
    (void)syscall(SYS_rt_sigprocmask, NO_SUCH_CHANGE, mask, nullptr, MASK_SIZE);
    return mask != nullptr && errno != EFAULT;
}

// Writes a byte, where there will be another one in a moment.
bool takes_byte(Byte *at)
{
    return syscall(SYS_rt_sigpending, at, 1) == 0;
}

// An emulator writes a whole mask, whatever part of it is asked for.
bool writes_whole_masks()
{
    alignas(MASK_SIZE) Byte mask[MASK_SIZE];
    memset(mask, 0xFF, sizeof(mask));
    return takes_byte(mask) && mask[MASK_SIZE - 1] != 0xFF;
}

bool is_writable(Byte *at)
{
    static const bool whole_masks = writes_whole_masks();
    if (!whole_masks) {
        return takes_byte(at);
    }
    Byte *mask = mask_around(at);
    Byte kept[MASK_SIZE];
    if (!is_readable(mask)) {
        return false;
    }
    memcpy(kept, mask, sizeof(kept));
    const bool taken = takes_byte(mask);
    if (taken) {
        memcpy(mask, kept, sizeof(kept));
    }
    return taken;
}

// The part of the bytes that is on the first page.
size_t size_on_page(const Byte *at, size_t size)
{
    static const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return std::min(size, page - reinterpret_cast<uintptr_t>(at) % page);
}

} // namespace

bool copy_from_user(void *to, uint64_t user_address, size_t size)
{
    Byte *from = pointer(user_address);
    auto *own = static_cast<Byte *>(to);
    for (size_t part = 0; size > 0; size -= part, from += part, own += part) {
        part = size_on_page(from, size);
        if (!is_readable(from)) {
            return false;
        }
        memcpy(own, from, part);
    }
    return true;
}

bool copy_to_user(uint64_t user_address, const void *from, size_t size)
{
    Byte *to = pointer(user_address);
    const auto *own = static_cast<const Byte *>(from);
    for (size_t part = 0; size > 0; size -= part, to += part, own += part) {
        part = size_on_page(to, size);
        if (!is_writable(to)) {
            return false;
        }
        memcpy(to, own, part);
    }
    return true;
}

} // namespace simulator
