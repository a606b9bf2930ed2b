// A program's call into the driver of its device.
#pragma once

#include <csignal>

namespace simulator
{

// The driver lets one exchange pass at a time, and a thread in the middle of one receives no signal
// and is not cancelled until it is over. A child inherits the driver while nobody is in it.
class DriverCall
{
  public:
    DriverCall();
    ~DriverCall();
    DriverCall(const DriverCall &) = delete;
    DriverCall &operator=(const DriverCall &) = delete;

  private:
    sigset_t before_ = {};
    int cancel_state_ = 0;
};

// Whether this thread is in such a call: what it opens then are files of the board, whatever their names
// lead to.
bool is_in_driver_call();

// What a call returns that gave this result, or a negated errno. Without an error, errno is as it was.
int result_or_errno(int result, int errno_before);

// The result of a call that the driver does not have, or refuses.
int refuse(int error);

} // namespace simulator
