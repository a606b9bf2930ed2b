// Records as labelled text: a line for each number, blank lines between the groups.
#pragma once

#include "stmctl/record/record.hpp"
#include "stmctl/record/text_buffer.hpp"

#include <optional>
#include <string_view>

namespace stmctl
{

// From a text as the module shows it; nothing if the text is truncated or damaged. The facts are
// needed for each record, so only their own lines are read.
std::optional<Record> record_of_text(const Columns &columns, std::string_view text);
std::optional<RecordFacts> facts_of_text(const Columns &columns, std::string_view text);

void put_text(const Record &record, TextBuffer &to);

} // namespace stmctl
