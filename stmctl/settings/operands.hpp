// What get and set take: the name of a row of the catalogue, and its operands.
#pragma once

#include "stmctl/command_line/command.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/module/operation.hpp"
#include "stmctl/settings/catalogue.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace stmctl
{

struct ValueOptions {
    std::string name;
    std::vector<std::string> operands;
    DeviceOptions device;
};

// What the operands say, checked against the row: the module itself lets some of them pass that
// are far out of range.
struct Values {
    int channel = 0;
    uint32_t number = 0;
    float first = 0;
    float second = 0;
};

// Throws a Failure if there is no such row.
const Quantity &row_for(const std::string &name, Direction direction);

// Throws a Failure for operands that do not fit the row.
Values parse_values(const Quantity &row, const std::vector<std::string> &operands);

// Opens the device and runs the row's operation. Throws a Failure if it fails.
Outcome call_on_device(const ValueOptions &options, const Quantity &row, const Values &values);

// Declares a command that takes them.
Action declare_values(CLI::App &command, Direction direction, const char *operands,
                      ExitStatus (*work)(const ValueOptions &));

} // namespace stmctl
