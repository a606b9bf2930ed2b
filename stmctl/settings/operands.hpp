// What get and set take: the name of a row of the catalogue, and its operands.
#pragma once

#include "stmctl/command_line/arguments.hpp"
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

// The values of the operands, checked against the row: the module itself accepts some that are far
// out of range.
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

// "adc-word-54 3"
std::string full_name(const Quantity &row, int channel);

// Runs the row's operation. If it fails, throws a Failure that begins with the name.
Outcome call(const Device &device, const std::string &name, const Quantity &row,
             const Values &values);

// The same, but opens the device first.
Outcome call_on_device(const DeviceOptions &options, const Quantity &row, const Values &values);

// Declares the operands, and the options of the device.
void add_values(CLI::App &command, Direction direction, Presence name, const char *operands,
                ValueOptions &options);

} // namespace stmctl
