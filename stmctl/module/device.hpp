// The device, for as long as a command talks to the co-processor.
#pragma once

#include "stmctl/module/device_lock.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/module/processes.hpp"

namespace CLI
{
class App;
}

namespace stmctl
{

inline constexpr char DEVICE[] = "/dev/spidev1.0"; // the one that the module knows

// Opens the device as one that only waits for the lock. Negative, and errno, if it cannot be opened
// for reading and writing.
int open_to_lock();

// "see stmctl --help access", and what is known of an errno of opening.
const char *remedy_of_opening(int error);

// Opens the link, which synchronises it, and must be closed with stm_close. For a device that could
// be opened just before.
Outcome open_link();

struct DeviceOptions {
    bool wait = false; // for another stmctl to be done
};

// Declares "--wait".
void add_device_options(CLI::App &command, DeviceOptions &options);

// Looks whether the device can be opened, locks it against other stmctl, opens and synchronises
// the link. Throws a Failure with the remedy in its sentence.
class Device
{
  public:
    explicit Device(const DeviceOptions &options);
    ~Device();
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

    // The processes that have it open, too. Not all of them know the lock.
    DeviceUsers other_users() const { return other_users_of(lock_); }

    bool is_open() const { return open_; }

    // Closes a device that has gone, and waits until one is there that can be opened and locked.
    // False if the wait was given up: then there is none.
    bool await_return(const Pause &pause);

    // As the function of this name. A time-out is told with its cause, as far as that can be found.
    void check(const Outcome &outcome, const std::string &name) const;

  private:
    bool reopen(const Pause &pause);
    void close();

    int lock_ = -1; // locked; the module opens the device again for itself
    bool open_ = false;
};

} // namespace stmctl
