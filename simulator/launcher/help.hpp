// The help of virtual-board: its options, faults and orders, and examples.
#pragma once

#include <string>

namespace simulator
{

std::string help_text();

} // namespace simulator
