// Waits in which the co-processor does not hear the polls.
#pragma once

#include "simulator/faults/faults.hpp"

#include <cstdint>

namespace simulator
{

// A host gives up after this many polls, pauses, and starts another wait.
inline constexpr int POLLS_OF_A_WAIT = 301;

class Deafness
{
  public:
    Deafness() = default;
    explicit Deafness(const Faults &faults);

    // From here on the polls are for this command. A wait in progress is over.
    void begin(uint8_t command);

    // Whether the next poll is not heard.
    bool covers_poll();

  private:
    static constexpr int COMMANDS = 0x100;

    int32_t waits_[COMMANDS] = {}; // remaining, by the command's code
    int32_t polls_ = 0;            // of the current wait
    uint8_t command_ = 0;          // being polled for
    [[maybe_unused]] uint8_t unused_[3] = {};
};

} // namespace simulator
