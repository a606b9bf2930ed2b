// Time that is counted instead of spent.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace simulator
{

// Without locks: signal handlers look at clocks, too.
class VirtualClock
{
  public:
    std::chrono::nanoseconds elapsed() const { return std::chrono::nanoseconds(elapsed_.load()); }
    void advance(std::chrono::nanoseconds time) { elapsed_ += time.count(); }

  private:
    std::atomic<int64_t> elapsed_ = 0;
};

// How long so many bytes take on a wire of this clock.
constexpr std::chrono::nanoseconds wire_time(uint64_t bytes, uint32_t speed_hz)
{
    return std::chrono::nanoseconds(bytes * 8 * 1'000'000'000 / speed_hz);
}

} // namespace simulator
