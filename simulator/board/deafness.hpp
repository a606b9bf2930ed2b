// Waits in which the co-processor does not hear the polls.
#pragma once

#include "simulator/faults/faults.hpp"

#include <map>

namespace simulator
{

// A host gives up after this many polls, pauses, and starts another wait.
inline constexpr int POLLS_OF_A_WAIT = 301;

class Deafness
{
  public:
    explicit Deafness(const Faults &faults);

    // From here on the polls are for the command of this place. A wait in progress is over.
    void begin(int place);

    // Whether the next poll is not heard.
    bool covers_poll();

  private:
    std::map<int, int> waits_;     // remaining, by the command's place
    int *current_waits_ = nullptr; // of the command being polled for
    int polls_ = 0;                // of the current wait
};

} // namespace simulator
