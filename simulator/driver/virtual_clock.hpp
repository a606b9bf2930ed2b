// Time that is counted instead of spent.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace simulator
{

// Without locks: signal handlers read clocks, too.
class VirtualClock
{
  public:
    std::chrono::nanoseconds elapsed() const { return std::chrono::nanoseconds(elapsed_.load()); }
    void advance(std::chrono::nanoseconds time) { elapsed_ += time.count(); }

  private:
    std::atomic<int64_t> elapsed_ = 0;
};

} // namespace simulator
