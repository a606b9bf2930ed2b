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

// How often a sleeper looks whether the owner has died; and how often somebody else looks at a lock
// that was left to a sleeper, who may be dead as well, or on a busy machine.
struct {
    long seconds = 0;
    long nanoseconds = 50'000'000;
} const LOOK;
constexpr int MOST_LOOKS = 40;

// Whether somebody has woken it.
bool sleep_while(LockWord &word, uint32_t value)
{
    return syscall(SYS_futex, &word, FUTEX_WAIT, value, &LOOK, nullptr, 0) == 0;
}

// Returns how many that was.
long wake_one(LockWord &word)
{
    return syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

} // namespace

// A lock that was left to somebody who sleeps is his: a program that comes again and again does not
// keep the others from it. Who has slept takes it as awaited, for there may be other sleepers.
void take_lock(LockWord &word, uint32_t self, HasDied has_died, const void *context)
{
    uint32_t seen = 0;
    if (word.compare_exchange_strong(seen, self)) {
        return;
    }
    bool has_slept = false;
    for (int looks = 0;;) {
        const uint32_t owner = seen & ~AWAITED;
        const bool is_left = owner == 0 && (has_slept || seen == 0 || looks > MOST_LOOKS);
        if (is_left || owner == self || (owner != 0 && has_died(context, owner))) {
            if (word.compare_exchange_strong(seen, self | AWAITED)) {
                return;
            }
        } else if ((seen & AWAITED) != 0 || word.compare_exchange_strong(seen, seen | AWAITED)) {
            has_slept = sleep_while(word, owner | AWAITED) || has_slept || owner != 0;
            looks = owner == 0 ? looks + 1 : 0;
            seen = word.load();
        }
    }
}

void leave_lock(LockWord &word)
{
    uint32_t seen = word.load();
    if ((seen & AWAITED) == 0 && word.compare_exchange_strong(seen, 0)) {
        return;
    }
    seen = AWAITED;
    word.store(seen);
    if (wake_one(word) == 0) {
        word.compare_exchange_strong(seen, 0);
    }
}

} // namespace simulator
