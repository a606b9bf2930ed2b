// Tracks for how long nothing has come, and when that is a silence.
//
// The module polls for a block 301 times, rests for half a second and continues polling, forever;
// it never asks again. If the header of a block comes with the last of those polls, the
// co-processor has delivered it and waits to be asked: nothing will ever come.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace stmctl
{

class Silence
{
  public:
    using Time = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::milliseconds;

    // given: the shortest silence that the user chose. Otherwise the default counts, or a second
    // after a stream so quick that a pause of that length must be a silence.
    Silence(std::optional<Duration> given, Duration by_default, Time now);

    // Records came. Returns the length of a silence that they end.
    std::optional<Duration> came(uint64_t records, Time now);

    // Polls found nothing, or something failed. If neither happened, we were kept from polling.
    void timed_out();
    void disturb() { disturbed_ = true; }

    // The co-processor was asked again.
    void asked(Time now);

    // Whether it is time to ask again. Each unsuccessful attempt doubles the wait for the next,
    // because asking may restart the co-processor's sampling.
    bool is_time_to_ask(Time now) const;

    Duration limit() const { return given_.value_or(by_default_); }
    Duration lasting(Time now) const;
    bool is_over_limit(Time now) const { return disturbed_ && lasting(now) >= limit(); }
    bool is_silence(Time now) const; // ended now
    bool is_worth_a_word() const;    // more was expected soon, as far as the rate is known

  private:
    bool is_quick() const;

    std::optional<Duration> given_;
    Duration by_default_;
    Time first_; // when the first record came, plus all silences since
    Time last_;
    uint64_t records_ = 0; // after those that came first
    bool some_came_ = false;
    bool disturbed_ = false;
    int timeouts_ = 0; // since the last record
    int tries_ = 0;    // since the last record
    Time asked_;
    Duration wait_{0};
};

} // namespace stmctl
