// Goal: each operation of the reader gives its result and changes its own fields, at both ends of
// the ring too, and no others.
#include "tests/ringbuffer/ring_fixture.hpp"

namespace
{

constexpr int READER = 2;

// A distance behind a mark, and the slot that lies there.
struct Distance {
    int mark;
    int n;
    int slot;
};

constexpr Distance DISTANCES[] = {
    {33, 0, 33},   {33, 1, 32},   {33, 33, 0},   {33, 34, 159},   {33, 159, 34},
    {33, 160, 33}, {3, 10, 153},  {0, 0, 0},     {0, 1, 159},     {0, 159, 1},
    {0, 160, 0},   {159, 0, 159}, {159, 159, 0}, {159, 160, 159}, {1, 2, 159},
};

class BehindTheMark : public Ring, public testing::WithParamInterface<Distance>
{
};

} // namespace

TEST_F(Ring, nothing_is_new_while_the_mark_is_the_write_index)
{
    for (const int index : {0, 41, 159}) {
        given({{WRITE_INDEX, index}, {MARK, index}});
        EXPECT_EQ(RingBuffer_NewValueAvailable(READER), 0);
        EXPECT_TRUE(unchanged());
    }
}

TEST_F(Ring, something_is_new_wherever_the_write_index_differs)
{
    for (const int index : {0, 32, 34, 159, -33, 33 + 256, 33 + 65536, INT_MIN, INT_MAX}) {
        given({{WRITE_INDEX, index}, {MARK, 33}});
        EXPECT_EQ(RingBuffer_NewValueAvailable(READER), 1) << index;
        EXPECT_TRUE(unchanged());
    }
}

TEST_F(Ring, the_count_does_not_tell_what_is_new)
{
    given({{WRITE_INDEX, 33}, {MARK, 33}, {COUNT, 159}});
    EXPECT_EQ(RingBuffer_NewValueAvailable(READER), 0);
    given({{WRITE_INDEX, 34}, {MARK, 33}, {COUNT, 0}, {VALUES_LEFT, 0}});
    EXPECT_EQ(RingBuffer_NewValueAvailable(READER), 1);
}

TEST_F(Ring, the_mark_is_a_snapshot_of_count_and_write_index)
{
    EXPECT_EQ(RingBuffer_MarkLastValue(READER), 1);
    EXPECT_TRUE(became({{VALUES_LEFT, 19}, {MARK, 41}}));
}

TEST_F(Ring, the_mark_takes_what_is_there_be_it_damaged)
{
    for (const int odd : {-1, 160, INT_MIN, INT_MAX}) {
        given({{COUNT, odd}, {WRITE_INDEX, 41}});
        EXPECT_EQ(RingBuffer_MarkLastValue(READER), 1);
        EXPECT_TRUE(became({{VALUES_LEFT, odd}, {MARK, 41}}));
        given({{COUNT, 5}, {WRITE_INDEX, odd}});
        EXPECT_EQ(RingBuffer_MarkLastValue(READER), 1);
        EXPECT_TRUE(became({{VALUES_LEFT, 5}, {MARK, odd}}));
    }
}

TEST_P(BehindTheMark, lies_the_first_value)
{
    given({{MARK, GetParam().mark}, {VALUES_LEFT, GetParam().n}});
    EXPECT_EQ(slot_number(RingBuffer_GetFirstValue(READER)), GetParam().slot);
    EXPECT_TRUE(became({{READ_POS, GetParam().slot}}));
}

TEST_P(BehindTheMark, lies_the_value_that_is_sought)
{
    given({{MARK, GetParam().mark}});
    EXPECT_EQ(slot_number(RingBuffer_SeekValue(READER, GetParam().n)), GetParam().slot);
    EXPECT_TRUE(became({{READ_POS, GetParam().slot}}));
}

TEST_P(BehindTheMark, lies_the_value_at_which_one_peeks_without_going_there)
{
    given({{MARK, GetParam().mark}});
    EXPECT_EQ(slot_number(RingBuffer_PeekValue(READER, GetParam().n)), GetParam().slot);
    EXPECT_TRUE(unchanged());
}

INSTANTIATE_TEST_SUITE_P(Each, BehindTheMark, testing::ValuesIn(DISTANCES));

TEST_F(Ring, the_next_value_is_taken_from_both_counters)
{
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 28);
    EXPECT_TRUE(became({{READ_POS, 28}, {COUNT, 18}, {VALUES_LEFT, 10}}));
}

TEST_F(Ring, the_next_value_behind_slot_159_is_in_slot_0)
{
    given({{READ_POS, 158}});
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 159);
    EXPECT_TRUE(became({{READ_POS, 159}, {COUNT, 18}, {VALUES_LEFT, 10}}));
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 0);
    EXPECT_TRUE(became({{READ_POS, 0}, {COUNT, 17}, {VALUES_LEFT, 9}}));
}

TEST_F(Ring, counters_of_the_next_value_stop_at_0_each_for_itself)
{
    given({{COUNT, 1}, {VALUES_LEFT, 0}});
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 28);
    EXPECT_TRUE(became({{READ_POS, 28}, {COUNT, 0}}));
    given({{COUNT, 0}, {VALUES_LEFT, 1}});
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 29);
    EXPECT_TRUE(became({{READ_POS, 29}, {VALUES_LEFT, 0}}));
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 30);
    EXPECT_TRUE(became({{READ_POS, 30}}));
}

TEST_F(Ring, the_next_value_leaves_counters_below_0_as_they_are)
{
    for (const int below : {-1, INT_MIN}) {
        given({{READ_POS, 27}, {COUNT, below}, {VALUES_LEFT, below}});
        EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 28);
        EXPECT_TRUE(became({{READ_POS, 28}}));
    }
}

TEST_F(Ring, the_next_value_is_taken_from_the_greatest_counters_too)
{
    given({{COUNT, INT_MAX}, {VALUES_LEFT, INT_MAX}});
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 28);
    EXPECT_TRUE(became({{READ_POS, 28}, {COUNT, INT_MAX - 1}, {VALUES_LEFT, INT_MAX - 1}}));
}

TEST_F(Ring, with_one_value_left_the_next_is_the_slot_that_the_writer_fills_next)
{
    given({{WRITE_INDEX, 34}, {COUNT, 1}});
    EXPECT_EQ(RingBuffer_MarkLastValue(READER), 1);
    EXPECT_EQ(slot_number(RingBuffer_GetFirstValue(READER)), 33);
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 34);
    EXPECT_TRUE(became({{MARK, 34}, {VALUES_LEFT, 0}, {COUNT, 0}, {READ_POS, 34}}));
    EXPECT_EQ(slot_number(RingBuffer_GetWriteSlot(READER)), 34);
}

TEST_F(Ring, the_values_left_are_told_as_they_stand)
{
    for (const int left : {0, 1, 11, 159, 160, -1, INT_MIN, INT_MAX}) {
        given({{VALUES_LEFT, left}});
        EXPECT_EQ(RingBuffer_GetValuesLeft(READER), left);
        EXPECT_TRUE(unchanged());
    }
}

TEST_F(Ring, the_write_slot_is_the_one_that_the_next_put_fills)
{
    for (const int index : {0, 41, 159}) {
        given({{WRITE_INDEX, index}});
        EXPECT_EQ(slot_number(RingBuffer_GetWriteSlot(READER)), index);
        EXPECT_TRUE(unchanged());
    }
}

TEST_F(Ring, operations_of_the_reader_ask_for_no_flag)
{
    given({{WRITER_OPEN, 1}, {READER_OPEN, 1}, {COUNT, 5}});
    EXPECT_EQ(RingBuffer_NewValueAvailable(READER), 1);
    EXPECT_EQ(RingBuffer_MarkLastValue(READER), 1);
    EXPECT_EQ(slot_number(RingBuffer_GetFirstValue(READER)), 36);
    EXPECT_EQ(RingBuffer_GetValuesLeft(READER), 5);
    EXPECT_TRUE(became({{MARK, 41}, {VALUES_LEFT, 5}, {READ_POS, 36}}));
}

TEST_F(Ring, a_slot_is_read_where_it_lies)
{
    given({{READ_POS, 6}});
    RingRecord *slot = RingBuffer_GetNextValue(READER);
    const RingRecord record = numbered_record(99);
    given({{WRITE_INDEX, 7}});
    RingBuffer_PutValue(1, &record);
    EXPECT_TRUE(same_record(*slot, record));
}
