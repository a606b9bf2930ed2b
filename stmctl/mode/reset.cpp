// reset: leaves the boot loader and starts the application.
#include "link/stm_com_funcs.h"
#include "stmctl/mode/mode.hpp"

namespace stmctl
{

Action declare_reset(CLI::App &command)
{
    return declare_on_device(
        command, [](const Device &) { return change_mode(stm_reset, "reset", APPLICATION); });
}

} // namespace stmctl
