// flash: writes an image to the co-processor's flash.
#pragma once

#include "stmctl/command_line/command.hpp"

namespace stmctl
{

Action declare_flash(CLI::App &command);

} // namespace stmctl
