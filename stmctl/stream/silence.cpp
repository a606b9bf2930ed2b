// Tracks for how long nothing has come, and when that is a silence.
#include "stmctl/stream/silence.hpp"

#include <algorithm>

namespace stmctl
{

namespace
{

constexpr double QUICK_PER_S = 4; // a stream of more than that never makes two time-outs in a row
constexpr int TIMEOUTS_OF_SILENCE = 2;          // in a quick stream
constexpr Silence::Duration TWO_TIMEOUTS(1000); // twice the half second that the module rests
constexpr Silence::Duration LONGEST_WAIT(60'000);

} // namespace

Silence::Silence(std::optional<Duration> given, Duration by_default, Time now)
    : given_(given), by_default_(by_default), first_(now), last_(now), asked_(now)
{
}

std::optional<Silence::Duration> Silence::came(uint64_t records, Time now)
{
    const bool was_silence = some_came_ ? is_silence(now) : is_over_limit(now);
    const Duration length = lasting(now);
    if (!some_came_) {
        first_ = now;
    } else {
        records_ += records;
        first_ += was_silence ? now - last_ : Time::duration(0);
    }
    some_came_ = true;
    last_ = now;
    disturbed_ = false;
    timeouts_ = tries_ = 0;
    return was_silence ? std::optional(length) : std::nullopt;
}

void Silence::timed_out()
{
    ++timeouts_;
    disturbed_ = true;
}

void Silence::asked(Time now)
{
    const Duration first = is_quick() ? TWO_TIMEOUTS : limit();
    wait_ = std::min(2 * (tries_ == 0 ? first : wait_), LONGEST_WAIT);
    ++tries_;
    asked_ = now;
}

bool Silence::is_time_to_ask(Time now) const
{
    if (tries_ > 0) {
        return now - asked_ >= wait_;
    }
    return is_quick() ? timeouts_ >= TIMEOUTS_OF_SILENCE : is_over_limit(now);
}

Silence::Duration Silence::lasting(Time now) const
{
    return std::chrono::duration_cast<Duration>(now - last_);
}

bool Silence::is_silence(Time now) const
{
    const bool soon = !given_ && (is_quick() || !some_came_);
    const Duration enough = soon ? std::min(limit(), TWO_TIMEOUTS) : limit();
    return disturbed_ && lasting(now) >= enough;
}

bool Silence::is_worth_a_word() const
{
    return disturbed_ && (is_quick() || records_ == 0);
}

bool Silence::is_quick() const
{
    const double seconds = std::chrono::duration<double>(last_ - first_).count();
    return seconds > 0 && static_cast<double>(records_) > QUICK_PER_S * seconds;
}

} // namespace stmctl
