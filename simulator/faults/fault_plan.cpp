// What faults make of a board that is honest otherwise.
#include "simulator/faults/fault_plan.hpp"

#include "simulator/wire/wire.hpp"

namespace simulator
{

std::optional<Death> death_at(const Faults &faults, int place)
{
    if (find_fault(faults, FaultKind::bus_inactive, place) != nullptr) {
        return Death{UNDRIVEN, "fault: the bus is inactive from here on"};
    }
    if (find_fault(faults, FaultKind::silence, place) != nullptr) {
        return Death{IDLE, "fault: silent from here on"};
    }
    return std::nullopt;
}

std::optional<Refusal> refusal_at(const Faults &faults, int step)
{
    if (find_fault(faults, FaultKind::checksum_error, step) != nullptr) {
        return Refusal{STATUS_CHECKSUM_ERROR, "fault: checksum error"};
    }
    if (find_fault(faults, FaultKind::address_error, step) != nullptr) {
        return Refusal{STATUS_ADDRESS_ERROR, "fault: address error"};
    }
    return std::nullopt;
}

uint8_t status_at(const Faults &faults, int step, uint8_t honest)
{
    const Fault *odd = find_fault(faults, FaultKind::status, step);
    return odd != nullptr ? static_cast<uint8_t>(odd->value) : honest;
}

// Delays add up.
int64_t delay_at(const Faults &faults, int place, int64_t honest)
{
    for (const int at : {ALWAYS, place}) {
        if (const Fault *late = find_fault(faults, FaultKind::late, at)) {
            honest += late->value;
        }
    }
    return honest;
}

uint16_t length_at(const Faults &faults, int place, uint16_t honest)
{
    for (const int at : {ALWAYS, place}) {
        if (const Fault *odd = find_fault(faults, FaultKind::length, at)) {
            honest = static_cast<uint16_t>(odd->value);
        }
    }
    return honest;
}

} // namespace simulator
