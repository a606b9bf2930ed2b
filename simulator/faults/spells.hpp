// The times during which a fault lasts: a silence of the co-processor, an absence of the device.
#pragma once

#include "simulator/faults/faults.hpp"

#include <chrono>

namespace simulator
{

class Spells
{
  public:
    Spells(const Faults &faults, FaultKind kind) : spells_(faults_by_time(faults, kind)) {}

    // How many have begun: also the number of the stretch that follows the last of them.
    int begun(std::chrono::nanoseconds now) const;

    bool cover(std::chrono::nanoseconds now) const;

  private:
    Faults spells_;
};

} // namespace simulator
