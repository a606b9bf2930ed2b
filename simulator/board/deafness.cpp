// Waits in which the co-processor does not hear the polls.
#include "simulator/board/deafness.hpp"

namespace simulator
{

Deafness::Deafness(const Faults &faults)
{
    for (const Fault &fault : faults) {
        if (fault.kind == FaultKind::deaf) {
            waits_[command_at(fault.place)] = fault.value;
        }
    }
}

void Deafness::begin(uint8_t command)
{
    if (polls_ > 0) {
        --waits_[command_];
        polls_ = 0;
    }
    command_ = command;
}

bool Deafness::covers_poll()
{
    if (waits_[command_] == 0) {
        return false;
    }
    if (++polls_ == POLLS_OF_A_WAIT) {
        --waits_[command_];
        polls_ = 0;
    }
    return true;
}

} // namespace simulator
