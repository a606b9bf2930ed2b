// A ring in two parts, of which either may be closed: whoever comes to a closed part waits until
// somebody else has acted. So one side acts between two loads or stores of the other.
#pragma once

#include "link/stm_com_funcs.h"

#include <cstddef>
#include <cstdint>
#include <functional>

class PartedRing
{
  public:
    // The field with which the last part begins.
    explicit PartedRing(size_t boundary = offsetof(RingBuffer, count));
    ~PartedRing();
    PartedRing(const PartedRing &) = delete;
    PartedRing &operator=(const PartedRing &) = delete;

    RingBuffer *ring() const { return reinterpret_cast<RingBuffer *>(memory_ + gap_); }

    // Each acts once, before anything of the part is loaded or stored.
    void before_last_part_is_loaded(std::function<void()> action);
    void before_last_part_is_stored(std::function<void()> action);
    void before_first_part_is_loaded(std::function<void()> action);

    bool has_acted() const;

  private:
    uint8_t *memory_ = nullptr;
    size_t part_ = 0;
    size_t gap_ = 0;
};
