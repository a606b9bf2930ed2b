// What records and follow have in common: they read out measurement records.
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

// As many as wanted or, if live, as they come.
ExitStatus read_records(const char *name, const ReadoutOptions &options, bool live);

// Declares the options; counted is the help of "-n".
std::shared_ptr<ReadoutOptions> declare_readout(CLI::App &command, const char *counted);

} // namespace stmctl
