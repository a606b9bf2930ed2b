// The times during which a fault lasts.
#include "simulator/faults/spells.hpp"

#include <algorithm>

namespace simulator
{

int Spells::begun(std::chrono::nanoseconds now) const
{
    return static_cast<int>(std::ranges::count_if(
        spells_, [now](const Fault &spell) { return spell.span.from <= now; }));
}

bool Spells::cover(std::chrono::nanoseconds now) const
{
    return std::ranges::any_of(spells_,
                               [now](const Fault &spell) { return spell.span.covers(now); });
}

} // namespace simulator
