// Records as JSON objects.
#include "stmctl/record/record_json.hpp"

#include "stmctl/record/csv_cutter.hpp"

#include <algorithm>
#include <charconv>

namespace stmctl
{

namespace
{

constexpr size_t LONGEST_NUMBER = 20;  // "-9223372036854775808"
constexpr size_t LONGEST_32_BITS = 11; // "-2147483648"
constexpr size_t LONGEST_MEMBER = sizeof(MemberName::bytes) + LONGEST_NUMBER;

// A copy of constant length is a single move, which is quicker than one of the exact length.
char *put_first_of_16(char *at, const char *bytes, size_t size)
{
    memcpy(at, bytes, 16);
    return at + size;
}

// Copies a number that is part of a longer text, which ends at end.
char *put_number(char *at, std::string_view number, const char *end)
{
    if (end - number.data() >= 16) {
        return put_first_of_16(at, number.data(), std::min(number.size(), LONGEST_NUMBER));
    }
    return std::copy(number.begin(), number.end(), at);
}

// {"time":1763785200.000000,"nr":1,...}; put_value puts the next column's value at a place with
// room for a number, and returns the place after it.
template <typename PutValue>
void put_object(const Columns &columns, std::string_view time, TextBuffer &to, PutValue put_value)
{
    to.clear();
    if (!time.empty()) {
        to.put("{\"time\":");
        to.put(time);
    }
    char *const members = to.room(MOST_COLUMNS * LONGEST_MEMBER);
    char *at = members;
    for (const Column &column : columns) {
        at = put_first_of_16(at, column.member.bytes.data(), column.member.size);
        at = put_value(at);
    }
    if (time.empty()) {
        *members = '{'; // instead of the comma before the first
    }
    to.end(at);
    to.put("}\n");
}

} // namespace

void put_json(const Record &record, std::string_view time, TextBuffer &to)
{
    const int64_t *value = record.values.data();
    put_object(*record.columns, time, to,
               [&](char *at) { return std::to_chars(at, at + LONGEST_NUMBER, *value++).ptr; });
}

bool put_json(const Columns &columns, std::string_view csv_line, std::string_view time,
              TextBuffer &to)
{
    const CsvCutter numbers(csv_line);
    if (!numbers.has(columns.size())) {
        return false;
    }
    const char *end = csv_line.data() + csv_line.size();
    size_t column = 0;
    bool good = true;
    put_object(columns, time, to, [&](char *at) {
        const std::string_view number = numbers[column++];
        good = good && !number.empty() && number.size() <= LONGEST_32_BITS;
        return put_number(at, number, end);
    });
    return good;
}

} // namespace stmctl
