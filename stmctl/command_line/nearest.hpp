// Finds the word that a mistyped one was probably meant to be.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace stmctl
{

// How many letters must be inserted, removed, replaced or swapped with their neighbour.
size_t typing_distance(std::string_view typed, std::string_view meant);

// "; did you mean flash?" for the nearest name, or nothing if none is near enough. A prefix
// that the typed word and all names share must be left out of both, because it says nothing; front
// puts it back.
std::string suggestion(std::string_view typed, std::span<const std::string> names,
                       std::string_view front = "");

// "SENTENCE; see stmctl --help", or "QUESTION? See stmctl --help".
std::string with_reference(std::string_view sentence, std::string_view place);

} // namespace stmctl
