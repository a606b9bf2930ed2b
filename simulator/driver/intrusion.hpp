// What another program sends to the co-processor between the exchanges of the running one: its
// transcript, played from a given time on.
#pragma once

#include "simulator/board/coprocessor.hpp"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace simulator
{

struct SentBytes {
    std::chrono::nanoseconds time{0};
    std::vector<uint8_t> bytes;
};

class Intrusion
{
  public:
    // Reads the transcripts that the faults name. Empty, or what is wrong with one of them.
    std::string load(const Faults &faults);

    // Plays what is due by now. The answers are discarded.
    void play_until(std::chrono::nanoseconds now, Coprocessor &coprocessor);

    // How many have been played; a board that others use is told it.
    size_t played() const { return played_; }
    void set_played(size_t played) { played_ = played; }

  private:
    std::vector<SentBytes> sent_; // in the order of their times
    size_t played_ = 0;
};

} // namespace simulator
