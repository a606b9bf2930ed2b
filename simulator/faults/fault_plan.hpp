// What faults make of a board that is honest otherwise, at the places where it asks. A fault without
// a place holds at each of them; one with a place counts after it.
#pragma once

#include "simulator/faults/faults.hpp"

#include <cstdint>
#include <optional>

namespace simulator
{

// How a board dies: what its line reads from then on.
struct Death {
    uint8_t line;
    const char *note;
};

std::optional<Death> death_at(const Faults &faults, int place);

// The status of a frame that is refused at a step of a download, although it is good.
struct Refusal {
    uint8_t status;
    const char *note;
};

std::optional<Refusal> refusal_at(const Faults &faults, int step);

// The status with which a frame is answered at a step of a download.
uint8_t status_at(const Faults &faults, int step, uint8_t honest);

// The polls that find the board busy at a place.
int64_t delay_at(const Faults &faults, int place, int64_t honest);

// The answer of the command at this place: a result, or the length of its reply.
uint16_t length_at(const Faults &faults, int place, uint16_t honest);

} // namespace simulator
