// A lock in memory that programs share.
#include "simulator/store/shared_lock.hpp"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace simulator
{

namespace
{

constexpr uint32_t AWAITED =
    0x80000000; // somebody sleeps until it is free; no process has this bit

// How often a sleeper looks whether the owner has died.
struct {
    long seconds = 0;
    long nanoseconds = 50'000'000;
} const LOOK;

void sleep_while(LockWord &word, uint32_t value)
{
    syscall(SYS_futex, &word, FUTEX_WAIT, value, &LOOK, nullptr, 0);
}

} // namespace

// Who has slept takes the lock as awaited, for there may be other sleepers.
void take_lock(LockWord &word, uint32_t self, HasDied has_died, const void *context)
{
    uint32_t seen = 0;
    if (word.compare_exchange_strong(seen, self)) {
        return;
    }
    for (;;) {
        const uint32_t owner = seen & ~AWAITED;
        if (owner == 0 || owner == self || has_died(context, owner)) {
            if (word.compare_exchange_strong(seen, self | AWAITED)) {
                return;
            }
        } else if ((seen & AWAITED) != 0 || word.compare_exchange_strong(seen, seen | AWAITED)) {
            sleep_while(word, owner | AWAITED);
            seen = word.load();
        }
    }
}

void leave_lock(LockWord &word)
{
    if ((word.exchange(0) & AWAITED) != 0) {
        syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    }
}

} // namespace simulator
