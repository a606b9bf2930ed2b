// The buffer of a board that measures on its own.
#include "simulator/measuring/live_buffer.hpp"

#include <algorithm>

namespace simulator
{

void LiveBuffer::start(std::chrono::nanoseconds now)
{
    stop();
    is_running_ = true;
    start_ns_ = now.count();
    measured_ = 0;
}

void LiveBuffer::stop()
{
    is_running_ = false;
    discarded_ += size_;
    size_ = 0;
}

// A sample is ready when its time is over. Seconds and their fraction, computed separately, stay
// within 64 bits.
int64_t LiveBuffer::due(std::chrono::nanoseconds now, int rate) const
{
    constexpr std::chrono::nanoseconds SECOND = std::chrono::seconds(1);
    const std::chrono::nanoseconds passed = now - std::chrono::nanoseconds(start_ns_);
    return passed / SECOND * rate + (passed % SECOND).count() * rate / SECOND.count();
}

uint32_t LiveBuffer::measure_until(std::chrono::nanoseconds now, int rate, uint32_t next)
{
    if (!is_running_) {
        return 0;
    }
    const int64_t fresh = std::max<int64_t>(due(now, rate) - measured_, 0);
    const auto kept = std::min<int64_t>(fresh, static_cast<int64_t>(CAPACITY - size()));
    for (int64_t i = 0; i < kept; ++i) {
        samples_[(oldest_ + size()) % CAPACITY] = next + static_cast<uint32_t>(i);
        ++size_;
    }
    measured_ += fresh;
    overrun_ += static_cast<uint64_t>(fresh - kept);
    return static_cast<uint32_t>(fresh);
}

uint32_t LiveBuffer::take()
{
    const uint32_t oldest = samples_[oldest_];
    oldest_ = static_cast<uint8_t>((oldest_ + 1) % CAPACITY);
    --size_;
    return oldest;
}

} // namespace simulator
