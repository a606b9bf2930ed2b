// Goal: the table that is drawn has the rows and columns of the CSV, in their order.
#include "stmctl/plot/plot_table.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

using Rows = std::vector<std::vector<double>>;

TEST(PlotTable, has_the_rows_in_their_order_and_the_columns_in_that_of_the_user)
{
    const PlotTable table = read_plot_table(
        "\"nr\";\"rel_t\";\"I1\"\n1;100;0.5\n2;200;-7\n3;300;2\n", {"I1", "nr"}, "records.csv");
    EXPECT_EQ(table.across, "rel_t");
    EXPECT_EQ(table.names, (std::vector<std::string>{"I1", "nr"}));
    EXPECT_EQ(table.rows, (Rows{{100, 0.5, 1}, {200, -7, 2}, {300, 2, 3}}));
}

TEST(PlotTable, without_rel_t_counts_the_rows_from_one)
{
    const PlotTable table = read_plot_table("\"I1\"\n5\n4\n", {"I1"}, "adc.csv");
    EXPECT_EQ(table.across, "line");
    EXPECT_EQ(table.rows, (Rows{{1, 5}, {2, 4}}));
}

TEST(OnlyColumn, is_the_one_beside_the_time_and_the_number_of_the_frame)
{
    EXPECT_EQ(only_column("\"value\";\n5;\n"), "value");
    EXPECT_EQ(only_column("\"time\";\"value\";\n"), "value");
    EXPECT_EQ(only_column("\"time\",\"frame\",\"value\"\n"), "value");
    EXPECT_EQ(only_column("\"nr\";\"value\";\n"), std::nullopt);
    EXPECT_EQ(only_column("\"time\";\n"), std::nullopt);
    EXPECT_EQ(only_column("value\n"), std::nullopt) << "not a header";
    EXPECT_EQ(only_column("\"value\n"), std::nullopt) << "not closed";
    EXPECT_EQ(only_column(""), std::nullopt);
}

} // namespace
