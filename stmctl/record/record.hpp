// A record as numbers.
#pragma once

#include "stmctl/record/columns.hpp"

#include <array>
#include <cstdint>

namespace stmctl
{

// What a record says about the stream that it came in.
struct RecordFacts {
    bool known = false; // hex does not show them
    uint32_t rel_t = 0;
    uint32_t buffered = 0; // records still waiting in the co-processor
};

struct Record {
    const Columns *columns;
    std::array<int64_t, MOST_COLUMNS> values; // as CSV shows them, in the order of the columns

    int64_t nr() const { return values[columns->nr()]; }
    uint32_t rel_t() const { return static_cast<uint32_t>(values[columns->rel_t()]); }
    uint32_t buffered() const { return static_cast<uint32_t>(values[columns->buffered()]); }
    int64_t checksum() const { return values[columns->checksum()]; }

    RecordFacts facts() const { return {true, rel_t(), buffered()}; }
};

} // namespace stmctl
