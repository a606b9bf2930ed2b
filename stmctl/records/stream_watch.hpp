// Shows the state of a stream of records: on a terminal in one line that refreshes itself,
// otherwise in a line each second and one for each event.
#pragma once

#include "stmctl/record/record_tally.hpp"
#include "stmctl/stream/pace.hpp"

#include <chrono>
#include <string>

namespace stmctl
{

class StreamWatch
{
  public:
    using Time = std::chrono::steady_clock::time_point;

    explicit StreamWatch(RecordTally &tally);

    void tick(Time now); // about as often as the module polls
    void finish();

  private:
    void show_events();
    void show_event(const std::string &event) const;
    void show_line(Time now);
    std::string line(Time now, int columns);

    RecordTally &tally_;
    RecordTally seen_;      // when events were last shown
    bool overflow_ = false; // lasts
    bool on_terminal_;
    Pace pace_;
};

} // namespace stmctl
