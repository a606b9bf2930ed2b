// Records as labelled text: a line for each number, blank lines between the groups.
#pragma once

#include "stmctl/record/record.hpp"
#include "stmctl/record/text_buffer.hpp"

#include <optional>
#include <string_view>

namespace stmctl
{

// From a text as the module shows it. Nothing comes of one that is cut, or damaged otherwise; the
// facts are looked for at their places alone, for they are wanted of each record.
std::optional<Record> record_of_text(const Columns &columns, std::string_view text);
std::optional<RecordFacts> facts_of_text(const Columns &columns, std::string_view text);

void put_text(const Record &record, TextBuffer &to);

} // namespace stmctl
