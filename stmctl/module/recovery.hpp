// Restores the dialogue with the co-processor after a failure.
#pragma once

#include "stmctl/module/device.hpp"

#include <functional>
#include <string>

namespace stmctl
{

class Recovery
{
  public:
    using Tell = std::function<void(const std::string &sentence)>;

    // pause does all the waiting, and can end it.
    Recovery(Device &device, Pause pause, Tell tell);

    // Waits until the device is there and no other process has it open, then synchronises the link.
    // A failure to do so is reported and shows in what is done next. False if the wait was given
    // up.
    bool await_link(const std::vector<Report> &failures);

    // The same, and also waits until the co-processor says that the application is running. The
    // mode is never switched: there may have been a reason to start the boot loader.
    bool await_application(const std::vector<Report> &failures);

  private:
    bool await_sole_use();
    void tell_of_failures(const std::vector<Report> &failures);
    void tell_of_hidden(const DeviceUsers &users);

    Device &device_;
    Pause pause_;
    Tell tell_;
    bool told_of_hidden_ = false;
};

} // namespace stmctl
