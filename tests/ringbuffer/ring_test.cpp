// Goal: opening, closing and putting do exactly what they always did to the segment, flags that
// nobody sets and a counter that stops at 159 included.
#include "tests/ringbuffer/ring_fixture.hpp"

namespace
{

class OtherMode : public Ring, public testing::WithParamInterface<const char *>
{
};

class OtherHandle : public Ring, public testing::WithParamInterface<int>
{
};

class SetFlag : public Ring, public testing::WithParamInterface<int>
{
};

class Counted : public Ring, public testing::WithParamInterface<std::pair<int, int>>
{
};

constexpr int WRITER = 1;
constexpr int READER = 2;

} // namespace

TEST_F(Ring, open_for_writing_gives_handle_1_and_begins_at_slot_0)
{
    EXPECT_EQ(RingBuffer_Open("w"), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 0}}));
}

TEST_F(Ring, open_for_reading_gives_handle_2_and_clears_the_writers_count_too)
{
    EXPECT_EQ(RingBuffer_Open("r"), 2);
    EXPECT_TRUE(became({{MARK, 0}, {READ_POS, 0}, {COUNT, 0}, {VALUES_LEFT, 0}}));
}

TEST_F(Ring, opening_sets_no_flag_so_that_a_second_one_is_let_in_too)
{
    given({{WRITER_OPEN, 0}, {READER_OPEN, 0}, {WRITE_INDEX, 0}});
    EXPECT_EQ(RingBuffer_Open("w"), 1);
    EXPECT_EQ(RingBuffer_Open("w"), 1);
    EXPECT_TRUE(unchanged());
    EXPECT_EQ(RingBuffer_Open("r"), 2);
    EXPECT_EQ(RingBuffer_Open("r"), 2);
    EXPECT_TRUE(became({{MARK, 0}, {READ_POS, 0}, {COUNT, 0}, {VALUES_LEFT, 0}}));
}

TEST_F(Ring, a_second_writer_is_refused_while_the_flag_is_1)
{
    given({{WRITER_OPEN, 1}});
    EXPECT_EQ(RingBuffer_Open("w"), -1);
    EXPECT_TRUE(unchanged());
    EXPECT_EQ(RingBuffer_Open("r"), 2);
}

TEST_F(Ring, a_second_reader_is_refused_while_the_flag_is_1)
{
    given({{READER_OPEN, 1}});
    EXPECT_EQ(RingBuffer_Open("r"), -1);
    EXPECT_TRUE(unchanged());
    EXPECT_EQ(RingBuffer_Open("w"), 1);
}

TEST_P(SetFlag, other_than_1_keeps_nobody_out)
{
    given({{WRITER_OPEN, GetParam()}, {READER_OPEN, GetParam()}});
    EXPECT_EQ(RingBuffer_Open("w"), 1);
    EXPECT_EQ(RingBuffer_Open("r"), 2);
    EXPECT_EQ(value(WRITER_OPEN), GetParam());
    EXPECT_EQ(value(READER_OPEN), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Each, SetFlag, testing::Values(0, 2, 3, 0x80, 0x81, 0xFF));

TEST_P(OtherMode, gives_handle_1_and_changes_nothing)
{
    EXPECT_EQ(RingBuffer_Open(GetParam()), 1);
    EXPECT_TRUE(unchanged());
}

TEST_P(OtherMode, is_let_in_by_set_flags_too)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}});
    EXPECT_EQ(RingBuffer_Open(GetParam()), 1);
    EXPECT_TRUE(unchanged());
}

INSTANTIATE_TEST_SUITE_P(Each, OtherMode,
                         testing::Values("x", "", "rw", "wr", "r+", "w+", "R", "W", " r", "r ",
                                         "ww", "rr", "rb", "w\n", "r\n", "a"));

TEST_F(Ring, a_closed_writer_has_its_flag_cleared_and_nothing_else)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}});
    EXPECT_EQ(RingBuffer_Close(WRITER), 1);
    EXPECT_TRUE(became({{WRITER_OPEN, 0}}));
}

TEST_F(Ring, a_closed_reader_has_its_flag_cleared_and_nothing_else)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}});
    EXPECT_EQ(RingBuffer_Close(READER), 1);
    EXPECT_TRUE(became({{READER_OPEN, 0}}));
}

TEST_F(Ring, closing_clears_whatever_the_flag_holds_and_works_as_often_as_one_likes)
{
    EXPECT_EQ(RingBuffer_Close(WRITER), 1);
    EXPECT_EQ(RingBuffer_Close(WRITER), 1);
    EXPECT_TRUE(became({{WRITER_OPEN, 0}}));
    EXPECT_EQ(RingBuffer_Close(READER), 1);
    EXPECT_EQ(RingBuffer_Close(READER), 1);
    EXPECT_TRUE(became({{READER_OPEN, 0}}));
}

TEST_F(Ring, a_closed_side_may_be_opened_again)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}});
    RingBuffer_Close(WRITER);
    EXPECT_EQ(RingBuffer_Open("w"), 1);
    RingBuffer_Close(READER);
    EXPECT_EQ(RingBuffer_Open("r"), 2);
}

TEST_P(OtherHandle, closes_nothing)
{
    EXPECT_EQ(RingBuffer_Close(GetParam()), -1);
    EXPECT_TRUE(unchanged());
}

INSTANTIATE_TEST_SUITE_P(Each, OtherHandle, testing::Values(-1, 0, 3, 257, 258, INT_MIN, INT_MAX));

TEST_F(Ring, a_put_fills_the_slot_at_the_write_index_and_moves_on)
{
    const RingRecord record = numbered_record(7);
    EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 42}, {COUNT, 20}}, {{41, record}}));
}

TEST_F(Ring, a_put_into_slot_159_goes_on_at_slot_0)
{
    given({{WRITE_INDEX, 159}});
    const RingRecord record = numbered_record(8);
    EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 0}, {COUNT, 20}}, {{159, record}}));
    EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 1}, {COUNT, 21}}, {{0, record}}));
}

TEST_F(Ring, a_put_into_slot_158_goes_on_at_slot_159)
{
    given({{WRITE_INDEX, 158}});
    const RingRecord record = numbered_record(9);
    EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 159}, {COUNT, 20}}, {{158, record}}));
}

TEST_F(Ring, the_160th_put_leaves_the_count_at_159)
{
    RingBuffer_Open("w");
    given({{COUNT, 0}});
    for (int i = 0; i < 160; ++i) {
        const RingRecord record = numbered_record(i);
        EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
        const int counted = i < 159 ? i + 1 : 159;
        EXPECT_TRUE(became({{WRITE_INDEX, (i + 1) % 160}, {COUNT, counted}},
                           {{static_cast<size_t>(i), record}}));
    }
    EXPECT_EQ(value(COUNT), 159);
    EXPECT_EQ(value(WRITE_INDEX), 0);
}

TEST_F(Ring, the_oldest_record_is_overwritten_without_a_look_at_the_reader)
{
    given({{WRITE_INDEX, 33}, {MARK, 33}, {READ_POS, 33}, {COUNT, 159}, {VALUES_LEFT, 159}});
    const RingRecord record = numbered_record(10);
    EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 34}}, {{33, record}}));
}

TEST_F(Ring, a_put_needs_no_open_and_asks_for_no_flag)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}});
    const RingRecord record = numbered_record(11);
    EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 42}, {COUNT, 20}}, {{41, record}}));
}

TEST_P(Counted, becomes_what_it_always_did)
{
    given({{COUNT, GetParam().first}});
    const RingRecord record = numbered_record(12);
    EXPECT_EQ(RingBuffer_PutValue(WRITER, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 42}, {COUNT, GetParam().second}}, {{41, record}}));
}

INSTANTIATE_TEST_SUITE_P(Each, Counted,
                         testing::Values(std::pair{0, 1}, std::pair{157, 158}, std::pair{158, 159},
                                         std::pair{159, 159}, std::pair{160, 160}, std::pair{-1, 0},
                                         std::pair{INT_MIN, INT_MIN + 1},
                                         std::pair{INT_MAX, INT_MAX}));
