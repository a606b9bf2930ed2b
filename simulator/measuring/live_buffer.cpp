// The buffer of a board that measures on its own.
#include "simulator/measuring/live_buffer.hpp"

#include <algorithm>

namespace simulator
{

namespace
{

constexpr size_t CAPACITY = 255;

} // namespace

void LiveBuffer::start(std::chrono::nanoseconds now)
{
    stop();
    running_ = true;
    start_ = now;
    measured_ = 0;
}

void LiveBuffer::stop()
{
    running_ = false;
    discarded_ += samples_.size();
    samples_.clear();
}

// A sample is ready when its time is over. Seconds and their fraction, computed separately, stay
// within 64 bits.
int64_t LiveBuffer::due(std::chrono::nanoseconds now) const
{
    constexpr std::chrono::nanoseconds SECOND = std::chrono::seconds(1);
    const std::chrono::nanoseconds passed = now - start_;
    return passed / SECOND * rate_ + (passed % SECOND).count() * rate_ / SECOND.count();
}

uint32_t LiveBuffer::measure_until(std::chrono::nanoseconds now, uint32_t next)
{
    if (!running_) {
        return 0;
    }
    const int64_t fresh = std::max<int64_t>(due(now) - measured_, 0);
    const auto kept = std::min<int64_t>(fresh, static_cast<int64_t>(CAPACITY - samples_.size()));
    for (int64_t i = 0; i < kept; ++i) {
        samples_.push_back(next + static_cast<uint32_t>(i));
    }
    measured_ += fresh;
    overrun_ += static_cast<uint64_t>(fresh - kept);
    return static_cast<uint32_t>(fresh);
}

uint32_t LiveBuffer::take()
{
    const uint32_t oldest = samples_.front();
    samples_.pop_front();
    return oldest;
}

} // namespace simulator
