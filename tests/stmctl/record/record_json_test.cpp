// Goal: a record is an object of its numbers, whether it comes as numbers or as CSV.
#include "stmctl/record/record_json.hpp"

#include "stmctl/record/record_csv.hpp"
#include "tests/stmctl/record/record_examples.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

const Columns &BASE = columns_of(RecordKind::base);
const Columns &TEMP = columns_of(RecordKind::temp);

constexpr char TEMP_OBJECT[] =
    R"("nr":7,"temp":2350,"rel_t":1234,"U1e":100,"U2e":200,"U3e":300,"Uen":-600,"I1":10,"I2":20,)"
    R"("I3":30,"negIe":-60,"BE1":1,"BE2":2,"BE":-3,"buffered":17,"checksum":513})"
    "\n";

// Of a record, and of its line: both must give the same.
std::string json(const Columns &columns, const std::string &line, const std::string &time)
{
    TextBuffer from_numbers;
    TextBuffer from_line;
    from_line.put("left over");
    put_json(*record_of_csv(columns, line), time, from_numbers);
    EXPECT_TRUE(put_json(columns, line, time, from_line));
    EXPECT_EQ(from_line.text(), from_numbers.text());
    return std::string(from_line.text());
}

bool becomes_json(const Columns &columns, const std::string &line)
{
    TextBuffer buffer;
    return put_json(columns, line, "", buffer);
}

TEST(RecordJson, is_an_object_on_one_line)
{
    EXPECT_EQ(json(TEMP, TEMP_LINE, ""), "{" + std::string(TEMP_OBJECT));
}

TEST(RecordJson, has_the_time_first)
{
    EXPECT_EQ(json(TEMP, TEMP_LINE, "1763785200.000001"),
              "{\"time\":1763785200.000001," + std::string(TEMP_OBJECT));
}

TEST(RecordJson, keeps_the_least_and_the_greatest_numbers)
{
    EXPECT_EQ(json(BASE, EXTREME_LINE, ""),
              R"({"nr":255,"rel_t":4294967295,"U1e":-2147483648,"U2e":2147483647,)"
              R"("U3e":-2147483648,"Uen":2147483647,"I1":-2147483648,"I2":2147483647,)"
              R"("I3":-2147483648,"negIe":2147483647,"BE1":-2147483648,"BE2":2147483647,)"
              R"("BE":-128,"BE32_01_ext":4294967295,"buffered":255,"checksum":65535})"
              "\n");
}

TEST(RecordJson, is_made_from_numbers_of_every_length)
{
    std::string number = "1";
    for (size_t length = 1; length <= 10; ++length, number += '1') {
        std::string line = TEMP_LINE;
        line.replace(line.find(";100;"), 5, ";" + number + ";");
        const std::string object = json(TEMP, line, "");
        EXPECT_NE(object.find("\"U1e\":" + number + ",\"U2e\":200,"), std::string::npos) << object;
    }
}

TEST(RecordJson, is_not_made_from_a_truncated_line)
{
    const std::string whole = TEMP_LINE;
    for (size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(becomes_json(TEMP, whole.substr(0, size))) << size;
    }
}

TEST(RecordJson, is_not_made_from_a_line_with_too_many_or_too_few_numbers)
{
    EXPECT_TRUE(becomes_json(TEMP, TEMP_LINE));
    EXPECT_FALSE(becomes_json(TEMP, std::string(TEMP_LINE) + TEMP_LINE));
    EXPECT_FALSE(becomes_json(TEMP, std::string("1;") + TEMP_LINE));
    EXPECT_FALSE(becomes_json(TEMP, std::string(TEMP_LINE).substr(2)));
    EXPECT_FALSE(becomes_json(TEMP, std::string(";") + TEMP_LINE));
    EXPECT_FALSE(becomes_json(TEMP, "12345678901" + std::string(TEMP_LINE)));
    EXPECT_FALSE(becomes_json(TEMP, std::string(100, '1') + TEMP_LINE));
    EXPECT_FALSE(becomes_json(TEMP, std::string(100000, ';')));
    EXPECT_FALSE(becomes_json(TEMP, std::string(100000, '1')));
    EXPECT_FALSE(becomes_json(TEMP, TEMP_TEXT));
}

} // namespace
