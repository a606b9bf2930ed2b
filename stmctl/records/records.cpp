// records: measurement records, as many as are wanted.
#include "stmctl/records/records.hpp"

#include "stmctl/records/readout.hpp"

namespace stmctl
{

Action declare_records(CLI::App &command)
{
    const auto options = declare_readout(command, "how many; 1 if --duration is not given either");
    return [options] { return read_records("records", *options, false); };
}

} // namespace stmctl
