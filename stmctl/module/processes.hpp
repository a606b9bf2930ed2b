// Other processes, as /proc shows them.
#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace stmctl
{

// "process 12 (update -state)"; the command line of a process that has ended is empty.
std::string process_words(pid_t process);

// How a process that waits for the lock has the device open. Nobody can talk through the device
// like that; the module opens it for reading and writing.
inline constexpr int WAITING_FLAGS = O_RDONLY | O_NONBLOCK;

// The other processes that have a device open.
struct DeviceUsers {
    std::vector<pid_t> processes;
    bool some_hidden = false; // there are processes that cannot be inspected

    // For answers that make no sense: "another program may have used the device", with those that
    // have it open.
    std::string suspicion() const;

    std::string words() const; // "process 12 (update -state) and process 13 (front-end)"

    // "process 12 (update -state) has it open", what being the thing that is open.
    std::string clause(const char *what) const;
};

// Those that only wait for the lock are not included.
DeviceUsers other_users_of(int descriptor);

} // namespace stmctl
