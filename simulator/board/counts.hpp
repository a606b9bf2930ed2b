// What became of the records of a board, counted by the board itself:
//
//     measured = delivered + overrun + discarded + buffered
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace simulator
{

struct Counts {
    uint64_t measured = 0;  // consecutively: the last one's rel_t
    uint64_t delivered = 0; // in blocks that were fetched to their end
    uint64_t begun = 0;     // in all blocks
    uint64_t overrun = 0;   // lost because the buffer was full
    uint64_t discarded = 0; // dropped, or in a block that was not fetched to its end
    uint64_t buffered = 0;  // still in the buffer, or in a block that is being fetched
    uint64_t blocks = 0;    // begun

    Counts &operator+=(const Counts &other);
    bool operator==(const Counts &) const = default;
};

// What a board has measured from one restart to the next.
struct Life {
    std::chrono::nanoseconds end{0};
    Counts counts;
};

// The counts of the lives that have ended, and of the present one.
struct Tally {
    std::span<const Life> over; // the latest last; perhaps not all of them
    Counts past;                // of all that have ended
    Counts present;
    uint64_t lives = 0; // that have ended
};

// One number of a tally per line, each at a fixed place however many digits it has.
struct CountRow {
    const char *name;
    uint64_t (*of)(const Tally &tally);
};

inline constexpr int COUNT_ROWS = 9;
extern const CountRow COUNT_TABLE[COUNT_ROWS];
inline constexpr int COUNT_NAME_WIDTH = 9;
inline constexpr int COUNT_WIDTH = 21; // the most digits possible, and a blank before them

std::string describe_counts(const Tally &tally);

// A life as a line, and the line with the names of its columns.
std::string describe_life(int number, const Life &life);
std::string name_life_columns();

} // namespace simulator
