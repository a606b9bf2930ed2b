// The host's time, as it goes with a record.
#pragma once

#include <string>

namespace stmctl
{

// Seconds since 1970 with six digits behind the point.
std::string host_time();

} // namespace stmctl
