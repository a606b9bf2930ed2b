// Goal: the fields of a line of CSV, with and without quotes, and the separator that its header
// shows.
#include "stmctl/record/csv_line.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

using Fields = std::vector<std::string_view>;

TEST(CsvLine, has_its_fields_between_separators_and_none_behind_the_last)
{
    EXPECT_EQ(csv_fields("1;2;3", ';'), (Fields{"1", "2", "3"}));
    EXPECT_EQ(csv_fields("1;2;3;", ';'), (Fields{"1", "2", "3"}));
    EXPECT_EQ(csv_fields(";2;;", ';'), (Fields{"", "2", ""}));
    EXPECT_EQ(csv_fields("1,5;2", ';'), (Fields{"1,5", "2"}));
    EXPECT_EQ(csv_fields("1,5;2", ','), (Fields{"1", "5;2"}));
    EXPECT_EQ(csv_fields("", ';'), Fields());
}

TEST(CsvLine, ends_where_the_line_ends)
{
    EXPECT_EQ(csv_fields("1;2\n3;4\n", ';'), (Fields{"1", "2"}));
    EXPECT_EQ(csv_fields("1;2\r\n3", ';'), (Fields{"1", "2"}));
    EXPECT_EQ(csv_fields("1;2\r", ';'), (Fields{"1", "2"}));
}

TEST(CsvLine, has_its_fields_without_their_quotes)
{
    EXPECT_EQ(csv_fields("\"nr\";\"\";\"", ';'), (Fields{"nr", "", "\""}));
    EXPECT_EQ(csv_fields("\"nr;nr\"", ';'), (Fields{"\"nr", "nr\""})) << "one quote stays";
}

TEST(CsvHeader, shows_the_separator_behind_its_first_name)
{
    EXPECT_EQ(separator_of("\"nr\",\"rel_t\""), ',');
    EXPECT_EQ(separator_of("\"nr\"\t\"rel_t\""), '\t');
    EXPECT_EQ(separator_of("\"nr\";\"rel_t\""), ';');
}

TEST(CsvHeader, that_shows_no_separator_has_the_usual_one)
{
    EXPECT_EQ(separator_of("\"nr\""), ';');
    EXPECT_EQ(separator_of("\"nr\" \"rel_t\""), ';');
    EXPECT_EQ(separator_of(",\t"), ';') << "no name";
    EXPECT_EQ(separator_of(""), ';');
}

TEST(CsvHeader, has_each_name_in_quotes)
{
    EXPECT_EQ(csv_header({"nr", "value"}), "\"nr\";\"value\";\n");
}

} // namespace
