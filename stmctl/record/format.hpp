// The formats in which results are shown, and the options that choose one.
#pragma once

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

    // Throws a Failure if the options do not go together.
    Format checked() const;
};

// "--format" with these words, "-o" and "--timestamps".
void add_format_options(CLI::App &command, FormatOptions &options,
                        const std::vector<std::string> &formats);

// The mode (ReadoutMode) in which the module is asked.
int mode_for(Format format);

} // namespace stmctl
