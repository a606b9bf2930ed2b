// Brings the dialogue with the co-processor back after a failure.
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

    // pause is how it waits, and ends what waits.
    Recovery(Device &device, Pause pause, Tell tell);

    // Waits until the device is there and nobody else has it open, and synchronises the link. That
    // this fails is told, and shows in what is done next. False if the wait was given up.
    bool await_link(const std::vector<Report> &failures);

    // The same, and until the application runs, as far as the co-processor tells. The mode is never
    // switched: whoever started the boot loader may have had a reason.
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
