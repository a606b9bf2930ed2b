// A little talk with the co-processor, to see how it goes. Nothing is changed by it.
#pragma once

#include "stmctl/module/voice.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

// What was asked for, or why it did not come. Nothing of both: it was not asked for.
template <typename Value>
struct Answer {
    std::optional<Value> value;
    std::string failure;
};

struct Dialogue {
    std::optional<Report> refused_clock;
    std::optional<Report> not_synchronised; // then nothing else was tried
    std::optional<uint32_t> speed_hz;
    Answer<uint8_t> mode;
    Answer<uint8_t> version;
    Answer<double> exchange_seconds; // of 4096 bytes, the quickest of some
    Answer<std::string> sampletime;  // of the application
};

// descriptor is one of the device. Throws a Failure if the user ends it.
Dialogue talk(int descriptor);

} // namespace stmctl
