// A lock in memory that programs share. It needs no descriptor, and whoever waits for it takes it from
// a program that has died with it.
#pragma once

#include <atomic>
#include <cstdint>

namespace simulator
{

// 0, or the number of the process that has it. Plain enough for programs of all architectures.
using LockWord = std::atomic<uint32_t>;
static_assert(sizeof(LockWord) == 4 && LockWord::is_always_lock_free);

// Whether a process has died.
using HasDied = bool (*)(const void *context, uint32_t process);

void take_lock(LockWord &word, uint32_t self, HasDied has_died, const void *context);
void leave_lock(LockWord &word);

} // namespace simulator
