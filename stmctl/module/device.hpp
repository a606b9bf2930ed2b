// The device, for as long as a command talks to the co-processor.
#pragma once

namespace CLI
{
class App;
}

namespace stmctl
{

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

  private:
    int descriptor_; // locked; the module opens the device again for itself
};

} // namespace stmctl
