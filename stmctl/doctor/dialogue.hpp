// A short dialogue with the co-processor, to see whether it works. It changes nothing.
#pragma once

#include "stmctl/module/voice.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

// The answer, or why there is none. If both are empty, the question was not asked.
template <typename Value>
struct Answer {
    std::optional<Value> value;
    std::string failure;
};

struct Dialogue {
    std::optional<Report> refused_clock;
    std::optional<Report> not_synchronised; // if set, nothing else was tried
    std::optional<uint32_t> speed_hz;
    Answer<uint8_t> mode;
    Answer<uint8_t> version;
    Answer<double> exchange_seconds; // of 4096 bytes, the quickest of some
    Answer<std::string> sampletime;  // of the application
};

// The descriptor is one of the device. Throws a Failure if the user stops the dialogue.
Dialogue talk(int descriptor);

} // namespace stmctl
