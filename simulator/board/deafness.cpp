// Waits in which the co-processor does not hear the polls.
#include "simulator/board/deafness.hpp"

namespace simulator
{

Deafness::Deafness(const Faults &faults)
{
    for (const Fault &fault : faults) {
        if (fault.kind == FaultKind::deaf) {
            waits_[fault.place] = fault.value;
        }
    }
}

void Deafness::begin(int place)
{
    if (polls_ > 0) {
        --*current_waits_;
        polls_ = 0;
    }
    const auto found = waits_.find(place);
    current_waits_ = found == waits_.end() ? nullptr : &found->second;
}

bool Deafness::covers_poll()
{
    if (current_waits_ == nullptr || *current_waits_ == 0) {
        return false;
    }
    if (++polls_ == POLLS_OF_A_WAIT) {
        --*current_waits_;
        polls_ = 0;
    }
    return true;
}

} // namespace simulator
