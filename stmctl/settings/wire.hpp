// How the value that a setting takes and the number that its query answers belong together: both
// are the same bits, but most answers are signed, and some are shorter.
#pragma once

#include "stmctl/settings/catalogue.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

// The value whose bits these are, from a signed or an unsigned number. None if the setting does not
// take it.
std::optional<uint32_t> value_of_bits(const Argument &argument, int64_t number);

// What is asked back once the setting has this value.
int64_t asked_back(const Answer &answer, uint32_t value);

// Whether an answer is that of the value, in the bits that both have.
bool answers_value(const Argument &argument, const Answer &answer, uint32_t value, int64_t number);

// Why a value is asked back as another number; empty if it is not.
std::string why_asked_back_otherwise(const Answer &answer, uint32_t value);

} // namespace stmctl
