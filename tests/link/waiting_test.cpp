// Goal: the stop line, and nothing that resembles it, stops.
#include "link/waiting.hpp"
#include "tests/platform/dialogue.hpp"

using namespace stm;

namespace
{

struct TypedLine {
    const char *text;
    int result;
    bool stops;
};

class Stopping : public Dialogue
{
};

class TypedLines : public Dialogue, public testing::WithParamInterface<TypedLine>
{
};

// Fills the line to its last character; a shorter buffer would be overrun.
int fill_line(char *line)
{
    for (int i = 0; i < 49; ++i) {
        line[i] = 's';
    }
    line[49] = '\0';
    return 1;
}

// Claims a line without placing one.
int claim_line(char *)
{
    return 1;
}

} // namespace

TEST_P(TypedLines, stop_only_as_the_stop_line_with_a_result)
{
    type_line(1, GetParam().text, GetParam().result);
    EXPECT_EQ(stop_requested(poll), GetParam().stops);
    EXPECT_TRUE(happened({"poll"}));
}

INSTANTIATE_TEST_SUITE_P(All, TypedLines,
                         testing::Values(TypedLine{"s\n", 1, true}, TypedLine{"s\n", -1, true},
                                         TypedLine{"s\n", 255, true}, TypedLine{"s\n", 0, false},
                                         TypedLine{"s", 1, false}, TypedLine{"s\nx", 1, false},
                                         TypedLine{"s\r\n", 1, false}, TypedLine{"S\n", 1, false},
                                         TypedLine{" s\n", 1, false}, TypedLine{"ss\n", 1, false},
                                         TypedLine{"\n", 1, false}, TypedLine{"", 1, false}));

TEST_F(Stopping, silence_goes_on)
{
    EXPECT_FALSE(stop_requested(poll));
    EXPECT_TRUE(happened({"poll"}));
}

TEST_F(Stopping, a_line_has_room_for_50_characters)
{
    EXPECT_FALSE(stop_requested(fill_line));
}

TEST_F(Stopping, a_line_of_an_earlier_poll_is_forgotten)
{
    type_line(1, "s\n");
    EXPECT_TRUE(stop_requested(poll));
    EXPECT_FALSE(stop_requested(claim_line));
}
