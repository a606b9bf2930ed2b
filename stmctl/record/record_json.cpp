// Records as objects in JSON.
#include "stmctl/record/record_json.hpp"

#include "stmctl/record/csv_cutter.hpp"

namespace stmctl
{

namespace
{

// {"time":1763785200.000000,"nr":1,...}; put_value puts the value of the next column.
template <typename PutValue>
void put_object(const Columns &columns, std::string_view time, TextBuffer &to, PutValue put_value)
{
    to.clear();
    if (!time.empty()) {
        to.put("{\"time\":");
        to.put(time);
    }
    for (const Column &column : columns) {
        to.put_first_of_16(column.member.bytes.data(), column.member.size);
        put_value();
    }
    to.put("}\n");
    to.replace_first('{'); // the comma that is too many without a time
}

} // namespace

void put_json(const Record &record, std::string_view time, TextBuffer &to)
{
    const int64_t *value = record.values.data();
    put_object(*record.columns, time, to, [&] { to.put(*value++); });
}

bool put_json(const Columns &columns, std::string_view csv_line, std::string_view time,
              TextBuffer &to)
{
    CsvCutter cutter(csv_line);
    put_object(columns, time, to, [&] {
        const char *number = cutter.next();
        to.put_first_of_16(number, cutter.size());
    });
    return cutter.is_done();
}

} // namespace stmctl
