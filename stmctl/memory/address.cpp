// The address that the commands of the co-processor's memory take.
#include "stmctl/memory/address.hpp"

#include "stmctl/command_line/arguments.hpp"
#include "stmctl/command_line/numbers.hpp"

namespace stmctl
{

uint16_t AddressOptions::parsed() const
{
    return static_cast<uint16_t>(parse_number(address, "address", 0, LAST_ADDRESS));
}

void add_address(CLI::App &command, AddressOptions &options)
{
    add_operand(command, "ADDRESS", Presence::required, options.address, "0 to 0xFFFF");
    add_device_options(command, options.device);
}

} // namespace stmctl
