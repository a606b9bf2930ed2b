// A virtual co-processor as far as it stays the same while it runs, but for its flash and memory.
#pragma once

#include "simulator/board/flash.hpp"
#include "simulator/commands/command_values.hpp"
#include "simulator/faults/faults.hpp"
#include "simulator/faults/spells.hpp"
#include "simulator/measuring/record_source.hpp"
#include "simulator/wire/mode.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace simulator
{

inline constexpr size_t MEMORY_SIZE = 0x10000;

// The identity of a board, apart from its flash.
struct BoardIdentity {
    Mode mode = Mode::application;
    uint8_t boot_loader_version = 5; // minor number; 0 is unknown
};

// The bytes of a board that survive a loss of power.
struct BoardBytes {
    std::span<uint8_t, FLASH_SIZE> flash;
    std::span<uint8_t, MEMORY_SIZE> memory;
};

// How a board behaves.
struct Behaviour {
    int busy_polls = 0; // busy polls after each frame, before the status or the answer
    Faults faults;
    int seed = 1;           // of all that it measures
    int adc_values = 200;   // that a frame declares valid
    int rate = 1000;        // samples of a stream per second
    int header_index = 0;   // of a block's header in a poll of a stream, or ANY_HEADER_INDEX
    int buffer_size = 4096; // of the driver: the most bytes in a message; the kernel's default
};

struct Board {
    Board(BoardBytes its_bytes, Behaviour its_behaviour);

    Measuring measuring() const;

    BoardBytes bytes;
    Behaviour behaviour;
    Faults restarts; // in the order of their times
    Spells silences;
    CommandValues settings; // as they were before the board received any
    CommandValues answers;  // that it was given
};

// The answer that the board was given for a command and a place, or null.
const std::string *find_answer(const Board &board, uint8_t code, int place);

// The answer for a command without places: the given one, or the command's own.
std::string_view answer_of(const Board &board, uint8_t code);

} // namespace simulator
