// Goal: the columns of each kind of record are those that users know, in their order.
#include "stmctl/record/columns.hpp"

#include <gtest/gtest.h>

using namespace stmctl;

namespace
{

using Names = std::vector<std::string_view>;

Names names(RecordKind kind)
{
    Names result;
    for (const Column &column : columns_of(kind)) {
        result.push_back(column.name);
    }
    return result;
}

TEST(Columns, of_each_kind_are_in_the_modules_order)
{
    EXPECT_EQ(names(RecordKind::base),
              (Names{"nr", "rel_t", "U1e", "U2e", "U3e", "Uen", "I1", "I2", "I3", "negIe", "BE1",
                     "BE2", "BE", "BE32_01_ext", "buffered", "checksum"}));
    EXPECT_EQ(names(RecordKind::omega),
              (Names{"nr", "omega_t", "rel_t", "U1e", "U2e", "U3e", "Uen", "I1", "I2", "I3",
                     "negIe", "BE1", "BE2", "BE", "BE32_01_ext", "buffered", "checksum"}));
    EXPECT_EQ(names(RecordKind::temp),
              (Names{"nr", "temp", "rel_t", "U1e", "U2e", "U3e", "Uen", "I1", "I2", "I3", "negIe",
                     "BE1", "BE2", "BE", "buffered", "checksum"}));
}

TEST(Columns, that_stmctl_uses_are_found_in_each_kind)
{
    for (const RecordKind kind : {RecordKind::base, RecordKind::omega, RecordKind::temp}) {
        const Columns &columns = columns_of(kind);
        EXPECT_EQ(columns[columns.nr()].name, "nr");
        EXPECT_EQ(columns[columns.rel_t()].name, "rel_t");
        EXPECT_EQ(columns[columns.buffered()].name, "buffered");
        EXPECT_EQ(columns[columns.checksum()].name, "checksum");
    }
    EXPECT_EQ(columns_of(RecordKind::base).rel_t(), 1U);
    EXPECT_EQ(columns_of(RecordKind::omega).rel_t(), 2U);
    EXPECT_EQ(columns_of(RecordKind::temp).rel_t(), 2U);
}

TEST(Columns, without_a_sign_are_the_time_and_the_32_outputs)
{
    Names unsigned_names;
    for (const Column &column : columns_of(RecordKind::omega)) {
        if (column.sign == Sign::without) {
            unsigned_names.push_back(column.name);
        }
    }
    EXPECT_EQ(unsigned_names, (Names{"rel_t", "BE32_01_ext"}));
}

} // namespace
