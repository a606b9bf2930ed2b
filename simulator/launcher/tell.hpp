// virtual-board tell: by hand, what happens to a board while programs use it.
#pragma once

#include <span>
#include <string>

namespace simulator
{

inline constexpr char TELL_COMMAND[] = "tell";

// Tells a board; the words are its folder and an order. Empty, or why the board has not been told.
std::string tell_by_hand(std::span<char *> words);

// The orders, one per line.
std::string describe_orders();

} // namespace simulator
