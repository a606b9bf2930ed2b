// What records and follow have in common: a read-out of measurement records.
#pragma once

#include "stmctl/command_line/command.hpp"
#include "stmctl/module/device.hpp"
#include "stmctl/record/format.hpp"
#include "stmctl/stream/run.hpp"

#include <memory>
#include <string>

namespace stmctl
{

struct ReadoutOptions {
    std::string variant = "base";
    RunOptions run;
    FormatOptions format;
    DeviceOptions device;
};

// As many as are wanted, or live: as they come.
ExitStatus read_records(const char *name, const ReadoutOptions &options, bool live);

// Declares the options; of "-n" the help says what is counted.
std::shared_ptr<ReadoutOptions> declare_readout(CLI::App &command, const char *counted);

} // namespace stmctl
