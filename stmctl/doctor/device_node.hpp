// The device node: whether it is one, and who may open it.
#pragma once

#include "stmctl/doctor/finding.hpp"

#include <sys/types.h>

#include <optional>
#include <vector>

namespace stmctl
{

struct NodeFile {
    mode_t mode = 0;
    uid_t owner = 0;
    gid_t group = 0;
    dev_t number = 0; // of a device
};

struct DeviceNode {
    int error = 0;                // the errno with which it cannot be opened; 0 if it can
    std::optional<NodeFile> file; // what was opened, or what exists under its name
    bool has_driver = false;      // one that answers like a driver for SPI
};

struct Caller {
    uid_t user = 0;
    std::vector<gid_t> groups;    // of this session
    std::vector<gid_t> member_of; // that a new session would have
};

Caller this_caller();

Finding judge_node(const DeviceNode &node);
Finding judge_rights(const DeviceNode &node, const Caller &caller);

} // namespace stmctl
