// Records in CSV: names in quotes, numbers, each with a semicolon behind it.
#pragma once

#include "stmctl/record/record.hpp"
#include "stmctl/record/text_buffer.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace stmctl
{

// Whether a text of the module's is a header rather than a line; throws a Failure if it has other
// columns than these.
bool is_csv_header(const Columns &columns, std::string_view text);

// From a line as the module shows it. Nothing comes of one that is cut, or damaged otherwise; the
// facts are looked for at their places alone, for they are wanted of each record.
std::optional<Record> record_of_csv(const Columns &columns, std::string_view line);
std::optional<RecordFacts> facts_of_csv(const Columns &columns, std::string_view line);

// "nr";"temp";"rel_t";... with stmctl's names.
std::string csv_header(const Columns &columns);

void put_csv(const Record &record, TextBuffer &to);

} // namespace stmctl
