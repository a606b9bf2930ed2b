// follow: shows measurement records as they come.
#include "stmctl/records/records.hpp"

#include "stmctl/records/readout.hpp"

namespace stmctl
{

Action declare_follow(CLI::App &command)
{
    const auto options = declare_readout(command, "stop after this many records");
    return [options] { return read_records("follow", *options, true); };
}

} // namespace stmctl
