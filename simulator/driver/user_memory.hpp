// Copies from and to the addresses that a program passes to its driver, as the kernel does: an
// invalid address is an error, not a crash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace simulator
{

inline constexpr size_t MOST_PIECES = 2;

struct UserPiece {
    void *to;
    uint64_t user_address;
    size_t size;
};

// Copies pieces, at most MOST_PIECES, in one call. Returns how many of them were copied whole, in
// their order; perhaps only the first, even if more can be read.
size_t copy_pieces_from_user(std::span<const UserPiece> pieces);

// False if not all of the bytes can be read or written.
bool copy_from_user(void *to, uint64_t user_address, size_t size);
bool copy_to_user(uint64_t user_address, const void *from, size_t size);

// A pointer of the program as the kernel sees it.
inline uint64_t user_address(const void *pointer)
{
    return reinterpret_cast<uintptr_t>(pointer);
}

} // namespace simulator
