// The counts of a stream of records.
#pragma once

#include "stmctl/output/counted.hpp"
#include "stmctl/record/record.hpp"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace stmctl
{

struct RecordTally {
    uint64_t records = 0;
    uint64_t lost = 0; // gaps in rel_t
    uint64_t rejected = 0;
    uint64_t overflowing = 0; // records with more than 190 waiting behind them
    uint64_t backward = 0;    // rel_t did not rise
    uint64_t timeouts = 0;
    uint64_t failures = 0;               // of exchanges
    uint64_t silences = 0;               // the stream paused for long
    std::chrono::milliseconds silent{0}; // in all of them
    bool visible = true;                 // losses can be seen at all
    uint32_t fullest = 0; // the most records waiting behind one, since it was last set to 0
    RecordFacts last;

    // Takes the next record. Returns how many are missing before it.
    uint32_t take(const RecordFacts &facts);

    void take_timeout() { ++timeouts; }
    void take_rejected() { ++rejected; }
    void take_silence(std::chrono::milliseconds duration);

    bool has_holes() const; // something of the stream is missing, or may be
    bool is_flawless() const;

    // "5 of 7 records, 2 lost, 1 rejected, 0 overflowing"
    std::string summary(std::optional<uint32_t> wanted) const;

    // The same as a JSON object in one line. What cannot be seen is null.
    std::string json(std::optional<uint32_t> wanted) const;
};

bool is_overflow(const RecordFacts &facts);

} // namespace stmctl
