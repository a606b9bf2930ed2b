// The formats in which results are shown.
#include "stmctl/record/format.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/process/failure.hpp"

#include <fmt/format.h>

namespace stmctl
{

namespace
{

void check_file(const FormatOptions &options)
{
    const bool is_file = !options.file.empty() && options.file != "-";
    if (options.append && options.no_clobber) {
        throw Failure(ExitStatus::usage, "--append and --no-clobber cannot be combined");
    }
    if (!is_file && (options.append || options.no_clobber)) {
        throw Failure(ExitStatus::usage, fmt::format("{} requires -o FILE",
                                                     options.append ? "--append" : "--no-clobber"));
    }
}

} // namespace

Format FormatOptions::checked() const
{
    const Format chosen = format == "csv"     ? Format::csv
                          : format == "hex"   ? Format::hex
                          : format == "jsonl" ? Format::jsonl
                                              : Format::text;
    if (timestamps && chosen != Format::csv && chosen != Format::jsonl) {
        throw Failure(ExitStatus::usage, "--timestamps requires --format csv or jsonl");
    }
    if (!separator.empty() && chosen != Format::csv) {
        throw Failure(ExitStatus::usage, "--separator requires --format csv");
    }
    csv_form();
    check_file(*this);
    return chosen;
}

OldContent FormatOptions::old_content() const
{
    return append       ? OldContent::continued
           : no_clobber ? OldContent::protects_file
                        : OldContent::replaced;
}

void add_format_options(CLI::App &command, FormatOptions &options,
                        const std::vector<std::string> &formats)
{
    add_option(command, "--format", "FORMAT", options.format, "output format", one_of(formats));
    add_option(command, "-o,--output", "FILE", options.file, "write to this file",
               names_of_files());
    add_flag(command, "--append", options.append, "append to what the file holds");
    add_flag(command, "--no-clobber", options.no_clobber, "do not overwrite an existing file");
    add_flag(command, "--timestamps", options.timestamps,
             "put the host's time first, in seconds since 1970");
    add_option(command, "--separator", "CHARACTER", options.separator,
               "field separator of csv: , ; or tab", some_of({"tab"}));
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
