// When the next line about a stream is due, and how quickly records came since the one before.
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

    // So many records have come in all. Returns the rate since the line before: "998/s".
    std::string take(uint64_t records, Time now);

    std::string elapsed(Time now) const; // "1:02:03"

  private:
    std::chrono::milliseconds interval_;
    Time start_;
    Time last_;
    uint64_t records_ = 0; // by then
};

} // namespace stmctl
