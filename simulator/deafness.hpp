// Waits in which the co-processor does not hear that it is polled.
#pragma once

#include "simulator/faults.hpp"

#include <map>

namespace simulator
{

// A host gives up after so many polls, rests, and begins to wait anew.
inline constexpr int POLLS_OF_A_WAIT = 301;

class Deafness
{
  public:
    explicit Deafness(const Faults &faults);

    // The polls from here on are for the command of this place. A wait that was begun is over.
    void begin(int place);

    // Whether the next poll goes unheard.
    bool covers_poll();

  private:
    std::map<int, int> waits_;     // that are left, by the command's place
    int *current_waits_ = nullptr; // of the command that is polled for
    int polls_ = 0;                // of the wait that has begun
};

} // namespace simulator
