// The buffer of a board that measures on its own, at its own rate: it holds samples until they are
// delivered; when it is full, new ones are lost.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace simulator
{

class LiveBuffer
{
  public:
    static constexpr size_t CAPACITY = 255;

    // Starts to measure now, with an empty buffer.
    void start(std::chrono::nanoseconds now);
    void stop();
    bool is_running() const { return is_running_; }

    // Measures until now, at a rate in samples per second. Returns the number of samples taken; next
    // is the number of the first.
    uint32_t measure_until(std::chrono::nanoseconds now, int rate, uint32_t next);

    size_t size() const { return size_; }
    uint32_t take(); // the oldest; there must be one

    uint64_t overrun() const { return overrun_; }     // lost while it was full
    uint64_t discarded() const { return discarded_; } // dropped at a start or a stop

  private:
    int64_t due(std::chrono::nanoseconds now, int rate) const;

    int64_t start_ns_ = 0;
    int64_t measured_ = 0; // since the start
    uint64_t overrun_ = 0;
    uint64_t discarded_ = 0;
    uint32_t samples_[CAPACITY] = {}; // from the oldest on, and on from the beginning
    uint8_t oldest_ = 0;
    uint8_t size_ = 0;
    bool is_running_ = false;
    [[maybe_unused]] uint8_t unused_ = 0;
};

} // namespace simulator
