// The buffer of a board that measures on its own, at its own rate: it holds samples until they are
// delivered; when it is full, new ones are lost.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>

namespace simulator
{

class LiveBuffer
{
  public:
    explicit LiveBuffer(int rate) : rate_(rate) {} // samples per second

    // Starts to measure now, with an empty buffer.
    void start(std::chrono::nanoseconds now);
    void stop();
    bool is_running() const { return running_; }

    // Measures until now. Returns the number of samples taken; next is the number of the first.
    uint32_t measure_until(std::chrono::nanoseconds now, uint32_t next);

    size_t size() const { return samples_.size(); }
    uint32_t take(); // the oldest; there must be one

    uint64_t overrun() const { return overrun_; }     // lost while it was full
    uint64_t discarded() const { return discarded_; } // dropped at a start or a stop

  private:
    int64_t due(std::chrono::nanoseconds now) const;

    int rate_;
    bool running_ = false;
    std::chrono::nanoseconds start_{0};
    int64_t measured_ = 0; // since the start
    std::deque<uint32_t> samples_;
    uint64_t overrun_ = 0;
    uint64_t discarded_ = 0;
};

} // namespace simulator
