// Puts the records that the module shows into the format that the user wants.
#pragma once

#include "stmctl/output/destination.hpp"
#include "stmctl/record/record_reader.hpp"

#include <optional>
#include <string>
#include <string_view>
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

class RecordWriter
{
  public:
    RecordWriter(Format format, bool timestamps, bool has_temperature, Destination &destination);

    // Takes a text that the module shows: a record, or the header of the CSV, for which there are
    // no facts.
    std::optional<RecordFacts> take(std::string_view text);

  private:
    void write_header();
    void write_line(std::string_view text);
    std::string json() const;

    Format format_;
    bool timestamps_;
    RecordReader reader_;
    Destination &destination_;
    bool has_header_ = false;
};

} // namespace stmctl
