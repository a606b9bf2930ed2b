// The driver lets several programs talk to the co-processor at once, and their dialogues mix. An
// advisory lock on the device keeps several stmctl apart.
#pragma once

namespace stmctl
{

// Throws a Failure that names the holder, or with wait waits for it.
void lock_device(int descriptor, const char *name, bool wait);

} // namespace stmctl
