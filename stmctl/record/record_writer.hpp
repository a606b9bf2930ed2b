// Writes records in the format that the user chose.
#pragma once

#include "stmctl/output/destination.hpp"
#include "stmctl/record/format.hpp"
#include "stmctl/record/record.hpp"
#include "stmctl/record/text_buffer.hpp"

#include <optional>
#include <string_view>

namespace stmctl
{

// How a file with such records begins; empty if unknown.
std::string beginning_of_records(Format format, bool timestamps, const Columns &columns,
                                 const CsvForm &form = {});

class RecordWriter
{
  public:
    RecordWriter(Format format, bool timestamps, const Columns &columns, Destination &destination,
                 const CsvForm &form = {});

    void finish(); // what is held back

    void begin(); // with the header of a CSV; once is enough

    void take(const Record &record);

    // Takes what the module shows in the mode for the format: a record, or the header of a CSV,
    // which has no facts. Throws a Failure if it is neither.
    std::optional<RecordFacts> take(std::string_view text);

  private:
    void write_csv(std::string_view line);
    void take_block(std::string_view text);
    RecordFacts take_line(std::string_view line);

    Format format_;
    bool timestamps_;
    const Columns &columns_;
    Destination &destination_;
    CsvForm form_;
    TextBuffer buffer_;
    bool begun_ = false;
    std::string block_; // in hex
    uint64_t records_of_block_ = 0;
};

// Of a labelled text of the module. Throws a Failure if it is not one.
RecordFacts checked_facts_of_text(const Columns &columns, std::string_view text);

} // namespace stmctl
