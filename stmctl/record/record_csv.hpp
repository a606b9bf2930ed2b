// Records in CSV: names in quotes and numbers, each followed by a semicolon.
#pragma once

#include "stmctl/record/record.hpp"
#include "stmctl/record/text_buffer.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace stmctl
{

// Whether a text of the module is a header rather than a record; throws a Failure if the columns of
// the header differ from these.
bool is_csv_header(const Columns &columns, std::string_view text);

// From a line as the module shows it; nothing if the line is truncated or damaged. The facts are
// needed for each record, so only their own fields are read.
std::optional<Record> record_of_csv(const Columns &columns, std::string_view line);
std::optional<RecordFacts> facts_of_csv(const Columns &columns, std::string_view line);

// "nr";"temp";"rel_t";... with stmctl's names.
std::string csv_header(const Columns &columns);

void put_csv(const Record &record, TextBuffer &to);

} // namespace stmctl
