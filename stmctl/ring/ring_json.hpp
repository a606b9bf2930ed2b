// The ring as JSON.
#pragma once

#include "stmctl/ring/ring_look.hpp"

#include <string>

namespace stmctl
{

std::string ring_json(const RingLook &look);

} // namespace stmctl
