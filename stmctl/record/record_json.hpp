// Records as objects in JSON, one in a line.
#pragma once

#include "stmctl/record/record.hpp"
#include "stmctl/record/text_buffer.hpp"

#include <string_view>

namespace stmctl
{

// The time goes first, as a number; there is none if it is empty.
void put_json(const Record &record, std::string_view time, TextBuffer &to);

// The same from a line of the module's CSV, whose digits are taken as they are. Returns false for
// fewer numbers or more, and for one longer than 32 bits can give; what is in the buffer is of no
// use then.
bool put_json(const Columns &columns, std::string_view csv_line, std::string_view time,
              TextBuffer &to);

} // namespace stmctl
