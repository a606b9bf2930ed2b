// Puts the records that the module shows into the format that the user wants.
#include "stmctl/record/record_writer.hpp"

#include "link/stm_com_funcs.h"
#include "stmctl/command_line/arguments.hpp"
#include "stmctl/process/failure.hpp"
#include "stmctl/record/csv_line.hpp"

#include <fmt/format.h>

#include <algorithm>

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

RecordWriter::RecordWriter(Format format, bool timestamps, bool has_temperature,
                           Destination &destination)
    : format_(format), timestamps_(timestamps), reader_(has_temperature), destination_(destination)
{
}

std::optional<RecordFacts> RecordWriter::take(std::string_view text)
{
    if (format_ == Format::text || format_ == Format::hex) {
        destination_.write(text);
        return format_ == Format::text ? facts_of_text(text) : RecordFacts();
    }
    const std::optional<RecordFacts> facts = reader_.take(text);
    if (facts) {
        write_line(text);
    } else if (!has_header_) {
        write_header(); // asked again, the module shows it again
    }
    return facts;
}

void RecordWriter::write_header()
{
    has_header_ = true;
    if (format_ == Format::csv) {
        destination_.write((timestamps_ ? "\"time\";" : "") + csv_header(reader_.names()));
    }
}

void RecordWriter::write_line(std::string_view text)
{
    if (format_ == Format::jsonl) {
        destination_.write(json());
        return;
    }
    if (timestamps_) {
        destination_.write(host_time() + ';');
    }
    destination_.write(text);
}

std::string RecordWriter::json() const
{
    std::string line = "{";
    if (timestamps_) {
        line += "\"time\":" + host_time();
    }
    const size_t count = std::min(reader_.names().size(), reader_.values().size());
    for (size_t i = 0; i < count; ++i) {
        line += line.size() > 1 ? "," : "";
        line.append("\"").append(reader_.names()[i]).append("\":").append(reader_.values()[i]);
    }
    return line + "}\n";
}

} // namespace stmctl
