// start: starts the boot loader.
#include "link/stm_com_funcs.h"
#include "stmctl/mode/mode.hpp"

namespace stmctl
{

Action declare_start(CLI::App &command)
{
    return declare_on_device(command, [](const Device &) {
        return change_mode(stm_start_bootloader, "start", BOOT_LOADER);
    });
}

} // namespace stmctl
