// Gathers everything once, before it is judged.
#pragma once

#include "stmctl/doctor/device_node.hpp"
#include "stmctl/doctor/dialogue.hpp"
#include "stmctl/module/processes.hpp"
#include "stmctl/module/wire_settings.hpp"

#include <optional>
#include <string>

namespace stmctl
{

struct Examination {
    DeviceNode node;
    Caller caller;
    DeviceUsers users;
    WireSettings left;  // as other programs have left them
    std::string holder; // of the lock; empty if it was free
    std::string lock_failure;
    std::optional<Dialogue> dialogue; // none where that could disturb another program's

    // Why there is no dialogue.
    std::string why_silent() const;
};

Examination examine();

} // namespace stmctl
