// What a hand does to a board that programs are using. It happens with their next call.
#pragma once

#include "simulator/store/shared_state.hpp"

#include <span>
#include <string>
#include <string_view>

namespace simulator
{

struct Order {
    std::string_view words;
    const char *help;
    void (*obey)(RunningState &state);
};

std::span<const Order> orders();

// Null if there is none of these words.
const Order *find_order(std::string_view words);

// Tells the board of a folder. Empty, or why it cannot be told.
std::string tell(const std::string &directory, const Order &order);

} // namespace simulator
