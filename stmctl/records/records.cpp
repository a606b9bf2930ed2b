// records: shows measurement records, as many as wanted.
#include "stmctl/records/records.hpp"

#include "stmctl/records/readout.hpp"

namespace stmctl
{

Action declare_records(CLI::App &command)
{
    const auto options =
        declare_readout(command, "number of records; 1 if --duration is not given");
    return [options] { return read_records("records", *options, false); };
}

} // namespace stmctl
