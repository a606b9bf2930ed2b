// Tables of rows that each begin with a command code: every code once, and a look-up that the
// compiler makes, so that an operation without a row does not compile.
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

void no_row_has_this_code(); // never defined: row_of cannot be evaluated once it comes to it

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
