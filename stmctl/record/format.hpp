// The formats in which results are shown, and the options that choose one.
#pragma once

#include "stmctl/output/destination.hpp"
#include "stmctl/record/csv_form.hpp"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace stmctl
{

enum class Format { text, csv, hex, jsonl };

struct FormatOptions {
    std::string format = "text";
    std::string file;
    bool timestamps = false;
    bool append = false;
    bool no_clobber = false;
    std::string separator; // empty: not given

    // Throws a Failure if the options do not go together.
    Format checked() const;

    OldContent old_content() const;
    CsvForm csv_form() const { return parse_csv_form(separator); }
};

// "--format" with these words, "-o" with "--append" and "--no-clobber", "--timestamps" and
// "--separator".
void add_format_options(CLI::App &command, FormatOptions &options,
                        const std::vector<std::string> &formats);

// The mode (ReadoutMode) in which the module is asked.
int mode_for(Format format);

} // namespace stmctl
