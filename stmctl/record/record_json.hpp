// Records as JSON objects, one per line.
#pragma once

#include "stmctl/record/record.hpp"
#include "stmctl/record/text_buffer.hpp"

#include <string_view>

namespace stmctl
{

// The time comes first, as a number; if it is empty, it is left out.
void put_json(const Record &record, std::string_view time, TextBuffer &to);

// The same from a line of the module's CSV, whose digits are copied. Returns false if there are too
// few or too many numbers, or one too long for 32 bits; the buffer is then useless.
bool put_json(const Columns &columns, std::string_view csv_line, std::string_view time,
              TextBuffer &to);

} // namespace stmctl
