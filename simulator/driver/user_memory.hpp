// Copies from and to the addresses that a program passes to its driver, as the kernel does: an
// invalid address is an error, not a crash.
#pragma once

#include <cstddef>
#include <cstdint>

namespace simulator
{

// False if not all of the bytes can be read or written; those before the first that cannot be are
// copied.
bool copy_from_user(void *to, uint64_t user_address, size_t size);
bool copy_to_user(uint64_t user_address, const void *from, size_t size);

// A pointer of the program as the kernel sees it.
inline uint64_t user_address(const void *pointer)
{
    return reinterpret_cast<uintptr_t>(pointer);
}

} // namespace simulator
