// The fields of a live line, as many as a terminal has room for.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace stmctl
{

struct LiveField {
    int rank; // 1 is the last to be left out
    std::string words;
    std::string brief = {}; // the same in fewer columns; empty: the words
};

// The fields with two blanks between them: all of them in their words, if they fit; else those of
// the lowest ranks that do, brief.
std::string fitted_line(std::span<const LiveField> fields, int columns);

// "999 B", "1.5 KiB", "12.0 MiB"
std::string size_words(uint64_t bytes);

} // namespace stmctl
