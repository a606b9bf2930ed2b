// Reads records from the CSV that the module shows.
#pragma once

#include "stmctl/record/record_tally.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stmctl
{

class RecordReader
{
  public:
    // Whether the records have a temperature: the module has two names for it, here it is "temp".
    explicit RecordReader(bool has_temperature) : has_temperature_(has_temperature) {}

    // Takes a header or a record. A header has no facts; shown again, it changes nothing.
    std::optional<RecordFacts> take(std::string_view text);

    const std::vector<std::string> &names() const { return names_; }
    const std::vector<std::string_view> &values() const { return values_; } // until the next take

  private:
    void take_header();

    bool has_temperature_;
    std::vector<std::string> names_;
    std::vector<std::string_view> values_;
    size_t rel_t_at_ = 0;
    size_t buffered_at_ = 0;
};

// The same from the labelled text.
RecordFacts facts_of_text(std::string_view text);

} // namespace stmctl
