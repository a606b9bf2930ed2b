// The formats in which results are shown.
#include "stmctl/record/format.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/process/failure.hpp"

namespace stmctl
{

Format FormatOptions::checked() const
{
    const Format chosen = format == "csv"     ? Format::csv
                          : format == "hex"   ? Format::hex
                          : format == "jsonl" ? Format::jsonl
                                              : Format::text;
    if (timestamps && chosen != Format::csv && chosen != Format::jsonl) {
        throw Failure(ExitStatus::usage, "--timestamps goes with --format csv or jsonl");
    }
    return chosen;
}

void add_format_options(CLI::App &command, FormatOptions &options,
                        const std::vector<std::string> &formats)
{
    add_option(command, "--format", "FORMAT", options.format, "how it is shown", one_of(formats));
    add_option(command, "-o,--output", "FILE", options.file, "write it to a file",
               names_of_files());
    add_flag(command, "--timestamps", options.timestamps,
             "put the host's time first, in seconds since 1970");
}

int mode_for(Format format)
{
    switch (format) {
    case Format::hex:
        return READOUT_HEX;
    case Format::text:
        return READOUT_TEXT;
    default:
        return READOUT_CSV;
    }
}

} // namespace stmctl
