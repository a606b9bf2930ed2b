// The host's time, as shown with a record.
#pragma once

#include <string>

namespace stmctl
{

// Seconds since 1970 with six decimals.
std::string host_time();

} // namespace stmctl
