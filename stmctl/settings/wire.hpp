// How the value of a setting and the number that its query answers are related: they are the same
// bits, but most answers are signed, and some are shorter.
#pragma once

#include "stmctl/settings/catalogue.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace stmctl
{

// The value with these bits, from a signed or unsigned number. None if the setting does not accept
// it.
std::optional<uint32_t> value_of_bits(const Argument &argument, int64_t number);

// What reads back once the setting has this value.
int64_t asked_back(const Answer &answer, uint32_t value);

// Whether an answer matches the value, in the bits that both have.
bool answers_value(const Argument &argument, const Answer &answer, uint32_t value, int64_t number);

// Why a value reads back as another number; empty if it is not.
std::string why_asked_back_otherwise(const Answer &answer, uint32_t value);

} // namespace stmctl
