// Goal: labelled text is converted to its numbers and back to the same text; a damaged one yields
// nothing.
#include "stmctl/record/record_text.hpp"

#include "stmctl/record/record_csv.hpp"
#include "tests/stmctl/record/record_examples.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

const Columns &BASE = columns_of(RecordKind::base);
const Columns &OMEGA = columns_of(RecordKind::omega);
const Columns &TEMP = columns_of(RecordKind::temp);

std::string text(const Record &record)
{
    TextBuffer buffer;
    put_text(record, buffer);
    return std::string(buffer.text());
}

std::string replaced(std::string text, const std::string &part, const std::string &by)
{
    return text.replace(text.find(part), part.size(), by);
}

TEST(RecordText, has_the_numbers_of_the_line_in_csv)
{
    EXPECT_EQ(record_of_text(BASE, BASE_TEXT)->values, record_of_csv(BASE, BASE_LINE)->values);
    EXPECT_EQ(record_of_text(OMEGA, OMEGA_TEXT)->values, record_of_csv(OMEGA, OMEGA_LINE)->values);
    EXPECT_EQ(record_of_text(TEMP, TEMP_TEXT)->values, record_of_csv(TEMP, TEMP_LINE)->values);
    EXPECT_EQ(record_of_text(BASE, EXTREME_TEXT)->values,
              record_of_csv(BASE, EXTREME_LINE)->values);
}

TEST(RecordText, is_converted_back_to_the_same_text)
{
    EXPECT_EQ(text(*record_of_text(BASE, BASE_TEXT)), BASE_TEXT);
    EXPECT_EQ(text(*record_of_text(OMEGA, OMEGA_TEXT)), OMEGA_TEXT);
    EXPECT_EQ(text(*record_of_text(TEMP, TEMP_TEXT)), TEMP_TEXT);
    EXPECT_EQ(text(*record_of_text(BASE, EXTREME_TEXT)), EXTREME_TEXT);
}

TEST(RecordText, of_another_kind_yields_nothing)
{
    EXPECT_FALSE(record_of_text(BASE, TEMP_TEXT));
    EXPECT_FALSE(record_of_text(TEMP, OMEGA_TEXT));
    EXPECT_FALSE(record_of_text(OMEGA, BASE_TEXT));
}

TEST(RecordText, may_have_any_number_of_blanks_after_its_labels)
{
    const std::string wide = replaced(TEMP_TEXT, "buffered  : 17", "buffered  :     17");
    EXPECT_EQ(record_of_text(TEMP, wide)->buffered(), 17U);
    EXPECT_EQ(facts_of_text(TEMP, wide)->buffered, 17U);
}

TEST(RecordText, that_is_truncated_anywhere_yields_nothing)
{
    const std::string whole = TEMP_TEXT;
    for (size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(record_of_text(TEMP, whole.substr(0, size))) << size;
    }
    EXPECT_FALSE(record_of_text(TEMP, whole + '\n'));
    EXPECT_FALSE(record_of_text(TEMP, whole + whole));
}

TEST(RecordText, that_is_damaged_yields_nothing)
{
    for (const auto &[part, by] :
         std::vector<std::pair<std::string, std::string>>{{": 1234\n", ": \n"},
                                                          {": 1234\n", ": x\n"},
                                                          {": 1234\n", ": 1234 \n"},
                                                          {": 1234\n", ": 2147483648\n"},
                                                          {": 1234\n", ": -2147483649\n"},
                                                          {"1234\n\n", "1234\n"},
                                                          {"rel_t:", "rel_t;"}}) {
        const std::string damaged = replaced(TEMP_TEXT, part, by);
        EXPECT_FALSE(record_of_text(TEMP, damaged)) << by;
        EXPECT_FALSE(facts_of_text(TEMP, damaged)) << by;
    }
}

TEST(RecordText, yields_its_facts)
{
    for (const auto &[columns, shown] : {std::pair(&BASE, BASE_TEXT), std::pair(&OMEGA, OMEGA_TEXT),
                                         std::pair(&TEMP, TEMP_TEXT)}) {
        const std::optional<RecordFacts> facts = facts_of_text(*columns, shown);
        ASSERT_TRUE(facts) << shown;
        EXPECT_TRUE(facts->known);
        EXPECT_EQ(facts->rel_t, 1234U);
        EXPECT_EQ(facts->buffered, 17U);
    }
    EXPECT_EQ(facts_of_text(BASE, EXTREME_TEXT)->rel_t, 0xFFFFFFFFU);
    EXPECT_EQ(facts_of_text(BASE, EXTREME_TEXT)->buffered, 255U);
}

TEST(RecordText, without_numbers_at_the_places_of_its_facts_has_none)
{
    for (const char *damaged : {"", "\n", "\n\n", "\n\n\n\n", "x", "x\n", "stm_uint8_t  nr   : 7",
                                "Received value: \n0x55 0x07 \n"}) {
        EXPECT_FALSE(facts_of_text(TEMP, damaged)) << damaged;
    }
    EXPECT_FALSE(facts_of_text(TEMP, replaced(TEMP_TEXT, "buffered  : 17\n", "")));
    EXPECT_FALSE(facts_of_text(TEMP, replaced(TEMP_TEXT, "buffered  : 17\n", "buffered  : \n")));
}

} // namespace
