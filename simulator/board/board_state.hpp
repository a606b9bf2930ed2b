// All that changes while a virtual co-processor runs, but for its flash and memory: one piece of plain
// numbers, the same on every machine, that can be copied at any time and continued elsewhere.
#pragma once

#include "simulator/board/application.hpp"
#include "simulator/board/boot_loader.hpp"
#include "simulator/board/deafness.hpp"
#include "simulator/board/flash.hpp"
#include "simulator/board/readout.hpp"
#include "simulator/board/transaction.hpp"
#include "simulator/wire/mode.hpp"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace simulator
{

// What a host may fetch next: one thing at a time.
enum class Owed : uint8_t { nothing, status, byte, transaction, records };

// A restart that the board was told of.
inline constexpr uint8_t NO_RESTART = 0;
constexpr uint8_t restart_as(Mode mode)
{
    return static_cast<uint8_t>(1 + static_cast<uint8_t>(mode));
}

constexpr Mode told_mode(uint8_t restart)
{
    return static_cast<Mode>(restart - 1);
}

struct BoardState {
    int64_t now_ns = 0;
    int64_t busy = 0;   // further polls that find the board busy with what it owes
    Counts past;        // of the lives that have ended
    Readout readout;    // of the present life
    uint32_t lives = 0; // that have ended, each with a restart
    BootLoader boot_loader;
    Transaction transaction;
    Deafness deafness;
    Application application;
    uint8_t buffer[LARGEST_BLOCK] = {}; // of the reply or block that is being fetched
    FlashChange flash_change;           // that is yet to be made
    Mode mode = Mode::application;
    uint8_t boot_loader_version = 0;
    Owed owed = Owed::nothing;
    uint8_t owed_byte = 0; // a status, or an answer of one byte
    bool is_dead = false;
    uint8_t dead_line = 0; // what is read from a dead board's line
    bool is_told_silent = false;
    uint8_t told_restart = 0;    // yet to come, as NO_RESTART or restart_as a mode
    uint32_t timed_restarts = 0; // that have been
};

// No padding, no pointers, and the same places on all machines: boards are handed from native to
// emulated programs.
static_assert(std::is_trivially_copyable_v<BoardState>);
static_assert(std::has_unique_object_representations_v<BoardState>);
static_assert(offsetof(BoardState, readout) == 72);
static_assert(offsetof(BoardState, boot_loader) == 1236);
static_assert(offsetof(BoardState, application) == 2312);
static_assert(offsetof(BoardState, buffer) == 4124);
static_assert(sizeof(BoardState) == 9264);

} // namespace simulator
