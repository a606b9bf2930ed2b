// The address that the commands of the co-processor's memory take.
#pragma once

#include "stmctl/module/device.hpp"

#include <cstdint>
#include <memory>
#include <string>

namespace stmctl
{

inline constexpr uint32_t LAST_ADDRESS = 0xFFFF;

struct AddressOptions {
    std::string address;
    DeviceOptions device;

    uint16_t parsed() const; // throws a Failure if it is not an address
};

// Declares the operand and the options of the device.
void add_address(CLI::App &command, AddressOptions &options);

} // namespace stmctl
