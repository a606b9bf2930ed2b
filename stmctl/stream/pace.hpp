// When the next line about a stream is due, and how fast records came since the previous one.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace stmctl
{

class Pace
{
  public:
    using Time = std::chrono::steady_clock::time_point;

    Pace(std::chrono::milliseconds interval, Time start)
        : interval_(interval), start_(start), last_(start)
    {
    }

    bool is_due(Time now) const { return now - last_ >= interval_; }

    // Takes the total number of records. Returns the rate since the previous line: "998/s".
    std::string take(uint64_t records, Time now);

    std::string elapsed(Time now) const; // "1:02:03"

  private:
    std::chrono::milliseconds interval_;
    Time start_;
    Time last_;
    uint64_t records_ = 0; // at the last line
};

} // namespace stmctl
