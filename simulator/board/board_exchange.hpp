// The virtual co-processor as a function: bytes in, bytes out, one exchange at a time. It knows nothing
// of files, clocks or processes; a state, a time and bytes always get the same answer.
#pragma once

#include "simulator/board/board.hpp"
#include "simulator/board/board_state.hpp"
#include "simulator/board/counts.hpp"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace simulator
{

// What a board tells those who watch it, beside its answers.
struct BoardReport {
    std::string note;        // how it understood the last exchange, in a few words
    std::vector<Life> lives; // that have ended, the latest last
};

// A board whose power has just come.
BoardState board_power_on(const Board &board, BoardIdentity identity);

// What is due by now happens. Time never goes backwards; its origin does not matter.
void board_advance(const Board &board, BoardState &state, std::chrono::nanoseconds now,
                   BoardReport &report);

// Clocks the bytes of one exchange in, and as many out, at this time. mosi and miso have the same
// size. A change of the flash is decided on, and made by the call below or the next exchange.
void board_exchange(const Board &board, BoardState &state, std::chrono::nanoseconds now,
                    std::span<const uint8_t> mosi, std::span<uint8_t> miso, BoardReport &report);
void board_settle(const Board &board, BoardState &state);

} // namespace simulator
