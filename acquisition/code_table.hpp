// Tables of rows that each start with a command code. Every code occurs once, and the compiler does
// the look-up, so that an operation without a row does not compile.
#pragma once

#include <cstddef>
#include <cstdint>

namespace stm
{

template <typename Row, size_t COUNT>
consteval bool codes_are_unique(const Row (&rows)[COUNT])
{
    for (size_t i = 0; i < COUNT; ++i) {
        for (size_t j = i + 1; j < COUNT; ++j) {
            if (rows[i].code == rows[j].code) {
                return false;
            }
        }
    }
    return true;
}

void no_row_has_this_code(); // never defined: a call makes row_of impossible to evaluate

template <typename Row, size_t COUNT>
consteval const Row &row_of(const Row (&rows)[COUNT], uint8_t code)
{
    for (const Row &row : rows) {
        if (row.code == code) {
            return row;
        }
    }
    no_row_has_this_code();
    return rows[0];
}

} // namespace stm
