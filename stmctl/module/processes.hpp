// Other processes, as /proc shows them.
#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace stmctl
{

// "process 12 (update -state)"; the command line of one that is gone is empty.
std::string process_words(pid_t process);

// How a process that waits for the lock has the device open: nobody talks through it so, and the
// module opens it for reading and writing.
inline constexpr int WAITING_FLAGS = O_RDONLY | O_NONBLOCK;

// The processes that have a device open besides this one.
struct DeviceUsers {
    std::vector<pid_t> processes;
    bool some_hidden = false; // there are processes that may not be looked at

    // For answers that make no sense: "another program may have used the device", and those that
    // have it open.
    std::string suspicion() const;

    std::string words() const; // "process 12 (update -state) and process 13 (front-end)"

    // "process 12 (update -state) has it open", of what is open.
    std::string clause(const char *what) const;
};

// Those that only wait for the lock are left out.
DeviceUsers other_users_of(int descriptor);

} // namespace stmctl
