// docs/records.md against the tables of fields: each byte of each kind of record.
#include "tests/docs/document.hpp"

#include "readout/record_format.hpp"
#include "ringbuffer/ring_record.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace stm;

const Document RECORDS = read_document("docs/records.md");

std::string type_of(const RecordField &field)
{
    constexpr const char *NAMES[] = {"uint8", "int8", "uint16", "int16", "int32"};
    const std::string name = NAMES[static_cast<size_t>(field.wire)];
    return field.csv == Csv::without_sign ? name + ", CSV uint32" : name;
}

Row row_of_field(const RecordField &field)
{
    std::string label = field.label;
    label.erase(label.find_last_not_of(' ') + 1);
    return {std::to_string(field.offset), std::to_string(wire_size(field.wire)), type_of(field),
            field.name, label};
}

std::vector<Row> rows_of(const RecordFormat &format)
{
    std::vector<Row> rows = {{"0", "1", "uint8", "–", "–"}}; // the marker
    if (format.reserved_at != 0) {
        rows.push_back({std::to_string(format.reserved_at), "2", "–", "–", "–"});
    }
    for (const RecordField &field : format.fields) {
        rows.push_back(row_of_field(field));
    }
    std::ranges::sort(rows, {}, [](const Row &row) { return std::stoi(row[0]); });
    return rows;
}

struct Kind {
    const char *heading;
    const RecordFormat &format;
};

TEST(Records, are_documented_byte_for_byte)
{
    const Kind kinds[] = {{"## Base records", STM_RECORD},
                          {"## Records with a rotation time", STM_RECORD_OMEGA},
                          {"## Records with a temperature", STM_RECORD_TEMP},
                          {"## Slots of the ring", STM_RING_RECORD}};
    for (const Kind &kind : kinds) {
        EXPECT_EQ(rows_under(RECORDS, kind.heading), rows_of(kind.format)) << kind.heading;
    }
}

// "56 bytes, requested with `0xC8`", the first line under the heading.
std::string first_words_under(const std::string &heading)
{
    auto line = std::ranges::find(RECORDS.lines, heading);
    line = std::find_if(line + 1, RECORDS.lines.end(), [](const auto &l) { return !l.empty(); });
    return line->substr(0, line->find_first_of(",."));
}

TEST(Records, are_documented_with_their_sizes)
{
    EXPECT_EQ(first_words_under("## Base records"), std::to_string(STM_RECORD.size) + " bytes");
    EXPECT_EQ(first_words_under("## Records with a rotation time"),
              std::to_string(STM_RECORD_OMEGA.size) + " bytes");
    EXPECT_EQ(first_words_under("## Records with a temperature"),
              std::to_string(STM_RECORD_TEMP.size) + " bytes");
    EXPECT_EQ(first_words_under("## Slots of the ring"),
              std::to_string(RINGBUFFER_SLOT_SIZE) + " bytes");
}

} // namespace
