// The device, held while a command talks to the co-processor.
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

// Opens the device in the way of a process that only waits for the lock. Returns a negative number
// and sets errno if it cannot be opened for reading and writing.
int open_to_lock();

// "see stmctl --help access", with what an errno of opening implies.
const char *remedy_of_opening(int error);

// Opens and synchronises the link, which must be closed with stm_close. For a device that could
// just be opened.
Outcome open_link();

struct DeviceOptions {
    bool wait = false; // for another stmctl to finish
};

// Declares "--wait".
void add_device_options(CLI::App &command, DeviceOptions &options);

// Checks whether the device can be opened, locks it against other stmctl, then opens and
// synchronises the link. Throws a Failure whose sentence names the remedy.
class Device
{
  public:
    explicit Device(const DeviceOptions &options);
    ~Device();
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;

    // The other processes that have it open. Not all of them know the lock.
    DeviceUsers other_users() const { return other_users_of(lock_); }

    bool is_open() const { return open_; }

    // Closes a device that has gone and waits for one that can be opened and locked. False if the
    // wait was given up: then no device is open.
    bool await_return(const Pause &pause);

    // Like the function of this name, but reports a time-out with its cause where that can be
    // found.
    void check(const Outcome &outcome, const std::string &name) const;

  private:
    bool reopen(const Pause &pause);
    void close();

    int lock_ = -1; // locked; the module opens the device for itself
    bool open_ = false;
};

} // namespace stmctl
