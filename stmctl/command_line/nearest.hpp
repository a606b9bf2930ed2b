// The word that a mistyped one was meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace stmctl
{

// How many letters must be put in, taken out, replaced or swapped with their neighbour.
size_t typing_distance(std::string_view typed, std::string_view meant);

// "; did you mean flash?" for the nearest of the names, or nothing if none is near enough. What
// stands in front of typed word and names alike is left to be put back, as it says nothing.
std::string suggestion(std::string_view typed, std::span<const std::string> names,
                       std::string_view front = "");

} // namespace stmctl
