// The settings in a row: each channel of each setting has a slot of its own, from 0 on.
#pragma once

#include "simulator/commands/command_values.hpp"

#include <array>
#include <cstddef>
#include <optional>

namespace simulator
{

// By slot.
const std::array<CommandKey, SETTING_SLOTS> &setting_keys();

// None if no setting has this key.
std::optional<size_t> setting_slot(CommandKey key);

} // namespace simulator
