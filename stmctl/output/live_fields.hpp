// The fields of a live line, as many as fit on a terminal.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace stmctl
{

struct LiveField {
    int rank; // 1 is left out last
    std::string words;
    std::string brief = {}; // the same in fewer columns; if empty, the words
};

// The fields with two blanks between them: all of them in full if they fit, otherwise as many as
// fit in brief, the lowest ranks first.
std::string fitted_line(std::span<const LiveField> fields, int columns);

// "999 B", "1.5 KiB", "12.0 MiB"
std::string size_words(uint64_t bytes);

} // namespace stmctl
