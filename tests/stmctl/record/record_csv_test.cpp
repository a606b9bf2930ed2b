// Goal: a line of CSV is converted to its numbers and back to the same line; a damaged one yields
// nothing.
#include "stmctl/record/record_csv.hpp"

#include "stmctl/process/failure.hpp"
#include "tests/stmctl/record/record_examples.hpp"

#include <gtest/gtest.h>

#include <limits>

using namespace stmctl;

namespace
{

const Columns &BASE = columns_of(RecordKind::base);
const Columns &OMEGA = columns_of(RecordKind::omega);
const Columns &TEMP = columns_of(RecordKind::temp);

std::string csv(const Record &record)
{
    TextBuffer buffer;
    put_csv(record, buffer);
    return std::string(buffer.text());
}

TEST(RecordCsv, is_converted_to_the_numbers_that_it_shows)
{
    const std::optional<Record> record = record_of_csv(OMEGA, OMEGA_LINE);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->columns, &OMEGA);
    EXPECT_EQ(record->values, (std::array<int64_t, 17>{7, 314, 1234, 100, 200, 300, -600, 10, 20,
                                                       30, -60, 1, 2, -3, 4000000000, 17, 513}));
    EXPECT_EQ(record->nr(), 7);
    EXPECT_EQ(record->rel_t(), 1234U);
    EXPECT_EQ(record->buffered(), 17U);
    EXPECT_EQ(record->checksum(), 513);
}

TEST(RecordCsv, has_its_values_in_the_columns_of_its_kind)
{
    EXPECT_EQ(record_of_csv(BASE, BASE_LINE)->rel_t(), 1234U);
    EXPECT_EQ(record_of_csv(BASE, BASE_LINE)->values[13], 4000000000);
    EXPECT_EQ(record_of_csv(TEMP, TEMP_LINE)->values[1], 2350);
    EXPECT_EQ(record_of_csv(TEMP, TEMP_LINE)->values[14], 17);
    EXPECT_FALSE(record_of_csv(BASE, TEMP_LINE))
        << "of the same length, and BE32_01_ext is below 0";
    EXPECT_FALSE(record_of_csv(TEMP, OMEGA_LINE));
    EXPECT_FALSE(record_of_csv(OMEGA, BASE_LINE));
}

TEST(RecordCsv, is_converted_back_to_the_same_line)
{
    EXPECT_EQ(csv(*record_of_csv(BASE, BASE_LINE)), BASE_LINE);
    EXPECT_EQ(csv(*record_of_csv(OMEGA, OMEGA_LINE)), OMEGA_LINE);
    EXPECT_EQ(csv(*record_of_csv(TEMP, TEMP_LINE)), TEMP_LINE);
    EXPECT_EQ(csv(*record_of_csv(BASE, EXTREME_LINE)), EXTREME_LINE);
}

TEST(RecordCsv, keeps_the_least_and_the_greatest_numbers)
{
    const std::optional<Record> record = record_of_csv(BASE, EXTREME_LINE);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->rel_t(), 0xFFFFFFFFU);
    EXPECT_EQ(record->values[2], std::numeric_limits<int32_t>::min());
    EXPECT_EQ(record->values[3], std::numeric_limits<int32_t>::max());
    EXPECT_EQ(record->values[13], 0xFFFFFFFF);
}

TEST(RecordCsv, that_is_truncated_anywhere_yields_nothing)
{
    const std::string whole = TEMP_LINE;
    for (size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(record_of_csv(TEMP, whole.substr(0, size))) << size;
        EXPECT_FALSE(facts_of_csv(TEMP, whole.substr(0, size))) << size;
    }
    EXPECT_FALSE(record_of_csv(TEMP, whole + '1')) << "or has something behind it";
    EXPECT_FALSE(record_of_csv(TEMP, whole + whole));
}

TEST(RecordCsv, that_is_damaged_yields_nothing)
{
    const auto with = [](size_t at, const char *part, size_t replaced) {
        return std::string(TEMP_LINE).replace(at, replaced, part);
    };
    for (const std::string &line :
         {with(0, "x", 1), with(0, "", 1), with(0, " ", 0), with(0, "+", 0), with(1, ",", 1),
          with(7, "-", 0), with(7, "4294967296;", 5), with(12, "2147483648;", 4),
          with(12, "1.5;", 4), with(12, "--1;", 4), with(12, "0x1;", 4)}) {
        EXPECT_FALSE(record_of_csv(TEMP, line)) << line;
    }
    EXPECT_TRUE(record_of_csv(TEMP, with(7, "4294967295;", 5))) << "which is a rel_t";
    EXPECT_TRUE(record_of_csv(TEMP, with(12, "-2147483648;", 4)));
}

TEST(RecordCsv, yields_its_facts)
{
    for (const auto &[columns, line] : {std::pair(&BASE, BASE_LINE), std::pair(&OMEGA, OMEGA_LINE),
                                        std::pair(&TEMP, TEMP_LINE)}) {
        const std::optional<RecordFacts> facts = facts_of_csv(*columns, line);
        ASSERT_TRUE(facts) << line;
        EXPECT_TRUE(facts->known);
        EXPECT_EQ(facts->rel_t, 1234U);
        EXPECT_EQ(facts->buffered, 17U);
    }
    EXPECT_EQ(facts_of_csv(BASE, EXTREME_LINE)->rel_t, 0xFFFFFFFFU);
    EXPECT_EQ(facts_of_csv(BASE, EXTREME_LINE)->buffered, 255U);
}

TEST(RecordCsv, without_numbers_at_the_places_of_its_facts_has_none)
{
    for (const char *line :
         {"", "\n", ";\n", ";;\n", ";;;;\n", "\"nr\";\n", "1;2;x;4;5;\n", "1;2;3;x;5;\n",
          "1;2;3;-4;5;\n", "1;2;4294967296;4;5;\n", "1;2;;4;5;\n", "1;2;3;;5;\n", "1;2;3;4;5\n"}) {
        EXPECT_FALSE(facts_of_csv(TEMP, line)) << line;
    }
}

TEST(RecordCsv, has_the_names_of_stmctl_in_its_header)
{
    EXPECT_EQ(csv_header(BASE), BASE_HEADER);
    EXPECT_EQ(csv_header(OMEGA), OMEGA_HEADER);
    EXPECT_EQ(csv_header(TEMP), TEMP_HEADER);
}

TEST(RecordCsv, may_have_either_header_of_the_module)
{
    EXPECT_TRUE(is_csv_header(BASE, BASE_HEADER));
    EXPECT_TRUE(is_csv_header(OMEGA, OMEGA_HEADER));
    EXPECT_TRUE(is_csv_header(TEMP, TEMP_HEADER));
    EXPECT_TRUE(is_csv_header(TEMP, LIVE_TEMP_HEADER));
    EXPECT_FALSE(is_csv_header(TEMP, TEMP_LINE));
    EXPECT_FALSE(is_csv_header(TEMP, ""));
}

TEST(RecordCsv, with_another_header_is_refused)
{
    EXPECT_THROW(is_csv_header(TEMP, BASE_HEADER), Failure);
    EXPECT_THROW(is_csv_header(BASE, "\"nr\";\n"), Failure);
    EXPECT_THROW(is_csv_header(BASE, "\""), Failure);
}

} // namespace
