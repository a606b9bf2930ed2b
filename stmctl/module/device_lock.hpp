// The driver lets several programs talk to the co-processor at once, and their dialogues mix. An
// advisory lock on the device keeps several stmctl apart.
#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace stmctl
{

// Waits for the given time. False if the wait is to be given up.
using Pause = std::function<bool(std::chrono::milliseconds)>;

// False if another process has the lock.
bool try_lock(int descriptor, const char *name);

// "process 12 (stmctl follow)"
std::string lock_holder(int descriptor);

// Throws a Failure that names the holder or, if wait is set, waits for it.
void lock_device(int descriptor, const char *name, bool wait);

// Waits silently. False if the wait was given up.
bool wait_for_lock(int descriptor, const char *name, const Pause &pause);

} // namespace stmctl
