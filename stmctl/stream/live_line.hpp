// Shows the progress of a run whose results are not visible: on a terminal in one line on standard
// error that refreshes itself; elsewhere, if verbose, in a line each minute.
#pragma once

#include "stmctl/output/destination.hpp"
#include "stmctl/record/record_tally.hpp"
#include "stmctl/stream/pace.hpp"

#include <string>

namespace stmctl
{

struct Counted {
    const char *words;
    const char *brief;
};

inline constexpr Counted RECORDS = {"records", "rec"};
inline constexpr Counted FRAMES = {"frames", "frames"};

class LiveLine
{
  public:
    // The destination of what the tally counts; null if there is none.
    LiveLine(std::string name, const RecordTally &tally, const Destination *destination,
             const Counted &counted = RECORDS);
    ~LiveLine(); // nothing of it stays
    LiveLine(const LiveLine &) = delete;
    LiveLine &operator=(const LiveLine &) = delete;

    // About as often as the module polls.
    void tick(Pace::Time now)
    {
        if (wanted_ && pace_.is_due(now)) {
            show(now);
        }
    }

  private:
    void show(Pace::Time now);
    std::string line(Pace::Time now, int columns);

    std::string name_;
    const RecordTally &tally_;
    const Destination *destination_;
    const Counted &counted_;
    bool on_terminal_;
    bool wanted_;
    Pace pace_;
};

} // namespace stmctl
