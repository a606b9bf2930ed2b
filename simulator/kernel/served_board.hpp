// A board whose wire ends in the kernel: one process has its folder to itself for as long as its power is
// on, and answers each message that the kernel's driver sends.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/driver/intrusion.hpp"
#include "simulator/driver/spi_device.hpp"
#include "simulator/run/run_options.hpp"
#include "simulator/store/kept_state.hpp"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

// A message as the controller passes it on.
struct WireMessage {
    std::span<uint8_t> mosi;
    std::span<uint8_t> miso; // as long
    uint32_t spi_mode;
    std::chrono::nanoseconds wire_time;
};

class ServedBoard
{
  public:
    explicit ServedBoard(RunOptions options);

    // Switches the power on. Empty, or why the folder is no board that this process can have.
    std::string begin();

    // Returns 0, or a negated errno if the exchange fails.
    int exchange(const WireMessage &message);

    // Empty, or what went wrong with the board's files.
    const std::string &error() const { return error_; }

  private:
    std::chrono::nanoseconds time() const;
    std::string take_over();
    void commit();
    void note(const std::string &error);
    void pass() const;

    RunOptions options_;
    KeptState kept_;
    std::string error_; // of the folder, at first
    Coprocessor coprocessor_;
    Intrusion intrusion_;
    SpiDevice device_;
    std::chrono::nanoseconds power_on_{0}; // both on the system's clock
    std::chrono::nanoseconds message_end_{0};
};

} // namespace simulator
