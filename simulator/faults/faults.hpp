// What can go wrong on a board, as values: the same values give the same failures every time.
//
//     KIND[@PLACE][=VALUE]      late@header=20      exchange@7=EIO      silence@12      flip@300
//
// Places are the steps of a download, "mode", "header" or the number of a block from 0; the
// commands of the application by their codes, as in length@0xA0=0; or exchanges, records and blocks
// of records by their numbers from 1, counted since power on. Events at a time of the board are
// written
//
//     KIND@t=TIME[=VALUE]       restart@t=2.5s=boot-loader      silence@t=2s..4s
#pragma once

#include "simulator/words/board_time.hpp"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator
{

enum class FaultKind {
    bus_inactive,   // nothing drives the line: every byte reads 0xFF
    silence,        // the co-processor neither listens nor answers: every byte reads 0x00
    checksum_error, // a frame is answered with 0xF0 and dropped
    address_error,  // a frame is answered with 0xF1 and dropped
    status,         // a frame is accepted, but answered with an unusual status byte
    late,           // a frame or a command is answered a number of polls later
    length,         // a command is answered with this result, or length of its reply
    deaf,           // a command is not answered during the first waits for it
    flip,           // a bit of a record is flipped
    unnumbered,     // a record has the number 0
    stuck,          // a record is a repetition of the one before it
    short_block,    // the end of a block of records is missing
    block_length,   // a block of records is announced with a wrong length
    padded,         // a block of records is padded with the byte that records start with
    exchange,       // an exchange fails with an errno, and its bytes are lost
    no_device,      // the device cannot be opened
    speed_refused,  // the device refuses the clock
    restart,        // the co-processor restarts in a given mode
    silent_spell,   // for a time the co-processor neither listens nor answers
    absence,        // for a time there is no device, and what was open before remains dead
    intrusion,      // the exchanges of another program are inserted
};

// Places of a fault.
inline constexpr int ALWAYS = -1;
inline constexpr int STEP_MODE = 0;
inline constexpr int STEP_HEADER = 1;
inline constexpr int STEP_FIRST_BLOCK = 2;

// The place of a command of the application.
constexpr int command_place(uint8_t code)
{
    return -0x100 - code;
}

// The command that has such a place.
constexpr uint8_t command_at(int place)
{
    return static_cast<uint8_t>(-0x100 - place);
}

struct Fault {
    FaultKind kind;
    int place; // ALWAYS, a step of a download, a command's place, or a number from 1
    int value; // a status byte, a number of polls, waits or bytes, a bit, a length, an errno, a
               // Mode
    TimeSpan span = {};    // of a fault at a time
    std::string file = {}; // of an intrusion
};

using Faults = std::vector<Fault>;

// The fault of a kind at exactly this place, or null.
const Fault *find_fault(const Faults &faults, FaultKind kind, int place);

// The faults of a kind that have times, in the order in which they start.
Faults faults_by_time(const Faults &faults, FaultKind kind);

// Reads one fault. None if the words are not understood; reason then says why.
std::optional<Fault> parse_fault(std::string_view words, std::string &reason);

// The beginning of each kind, up to its place: "silence", "flip@", "restart@t=".
std::vector<std::string> beginnings_of_faults();

// The kinds with their places and values, one per line.
std::string describe_faults();

} // namespace simulator
