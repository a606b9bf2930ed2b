// Queries, names and changes the mode in which the co-processor runs.
#pragma once

#include "stmctl/process/exit_status.hpp"

#include <cstdint>
#include <string>

namespace stmctl
{

// "boot loader"
const char *mode_name(uint8_t mode);

// The byte that answers a query. Throws a Failure that begins with the name.
uint8_t ask_for_byte(uint8_t query, const std::string &name);

// Sends a command that has no answer: only the mode shows whether it was understood.
ExitStatus change_mode(int (*send)(), const char *name, uint8_t wanted);

} // namespace stmctl
