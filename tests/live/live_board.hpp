// The module on the virtual co-processor, in one process, on a clock that is counted.
#pragma once

#include "simulator/board/coprocessor.hpp"
#include "simulator/driver/spi_device.hpp"
#include "simulator/driver/virtual_clock.hpp"

#include <chrono>
#include <vector>

class LiveBoard
{
  public:
    explicit LiveBoard(const simulator::Behaviour &behaviour);
    ~LiveBoard();
    LiveBoard(const LiveBoard &) = delete;
    LiveBoard &operator=(const LiveBoard &) = delete;

    // The board that the module's calls reach.
    static LiveBoard &running();

    std::chrono::nanoseconds elapsed() const { return clock_.elapsed(); }

    // What the module's ioctl and usleep do.
    int on_ioctl(unsigned long request, void *argument);
    void on_usleep(unsigned microseconds);

  private:
    std::vector<uint8_t> flash_;
    std::vector<uint8_t> memory_;
    simulator::VirtualClock clock_;
    simulator::Coprocessor coprocessor_;
    simulator::SpiDevice device_;
};
