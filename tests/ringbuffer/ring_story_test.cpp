// Goal: told as a story, with a writer and a reader that take turns: of n records the first batch
// has n - 1, and each later one exactly what is new.
#include "tests/ringbuffer/ring_fixture.hpp"
#include "tests/ringbuffer/turns.hpp"

namespace
{

// The fixture: a new segment, which is zero.
class Story : public Ring, public Turns
{
  protected:
    Story()
    {
        segment.assign(segment.size(), 0);
        open();
    }
};

} // namespace

TEST_F(Story, nothing_is_read_from_an_empty_ring)
{
    EXPECT_EQ(read(), Numbers());
    EXPECT_EQ(read(), Numbers());
}

TEST_F(Story, the_oldest_record_of_the_first_batch_is_passed_over)
{
    put(5);
    EXPECT_EQ(read(), from_to(2, 5));
    EXPECT_EQ(value(COUNT), 1);
    EXPECT_EQ(read(), Numbers());
}

TEST_F(Story, each_later_batch_has_exactly_what_is_new)
{
    put(2);
    EXPECT_EQ(read(), Numbers({2}));
    for (const int records : {1, 3, 1, 1, 50, 158, 2}) {
        const int first = latest + 1;
        put(records);
        EXPECT_EQ(read(), from_to(first, latest));
        EXPECT_EQ(value(COUNT), 1);
        EXPECT_EQ(value(VALUES_LEFT), 1);
        EXPECT_EQ(read(), Numbers());
    }
}

TEST_F(Story, a_thousand_turns_around_the_ring_lose_and_repeat_nothing)
{
    put(2);
    read();
    for (int turn = 0; turn < 1000; ++turn) {
        const int first = latest + 1;
        put(1 + turn * 7 % 158);
        ASSERT_EQ(read(), from_to(first, latest));
    }
}

TEST_F(Story, what_is_put_during_a_batch_is_for_the_next_one)
{
    put(4);
    EXPECT_EQ(begin(), 1);
    EXPECT_EQ(next(), 2);
    put(2);
    EXPECT_EQ(next(), 3);
    put(1);
    EXPECT_EQ(next(), 4);
    EXPECT_EQ(RingBuffer_GetValuesLeft(reader), 1);
    EXPECT_EQ(read(), from_to(5, 7));
    EXPECT_EQ(read(), Numbers());
}

TEST_F(Story, what_is_put_between_mark_and_first_value_is_for_the_next_batch_too)
{
    put(4);
    EXPECT_EQ(RingBuffer_MarkLastValue(reader), 1);
    put(3);
    EXPECT_EQ(RingBuffer_GetFirstValue(reader)->rel_t, 1);
    EXPECT_EQ(next(), 2);
    EXPECT_EQ(next(), 3);
    EXPECT_EQ(next(), 4);
    EXPECT_EQ(RingBuffer_GetValuesLeft(reader), 1);
    EXPECT_EQ(read(), from_to(5, 7));
}

TEST_F(Story, a_reader_that_lags_gets_the_newest_158)
{
    put(2);
    read();
    put(1000);
    EXPECT_EQ(value(COUNT), 159);
    EXPECT_EQ(read(), from_to(1002 - 157, 1002));
    put(3);
    EXPECT_EQ(read(), from_to(1003, 1005));
}

TEST_F(Story, the_159th_unread_record_costs_the_oldest)
{
    put(2);
    read();
    put(159);
    EXPECT_EQ(read(), from_to(4, 161));
}

TEST_F(Story, exactly_160_unread_records_look_like_none_by_their_index)
{
    put(2);
    read();
    put(160);
    EXPECT_EQ(read(), Numbers());
    put(1);
    EXPECT_EQ(read(), from_to(6, 163));
}

TEST_F(Story, a_single_first_record_gives_the_slot_that_the_writer_fills_next)
{
    put(1);
    EXPECT_EQ(read(), Numbers({0}));
    EXPECT_EQ(value(COUNT), 0);
    put(1);
    EXPECT_EQ(read(), Numbers({0}));
}

TEST_F(Story, records_that_come_and_are_looked_at_one_by_one_are_seen_160_later)
{
    for (int i = 1; i <= 160; ++i) {
        put(1);
        EXPECT_EQ(read(), Numbers({i == 160 ? 1 : 0}));
    }
    put(1);
    EXPECT_EQ(read(), Numbers({2}));
    put(2);
    EXPECT_EQ(read(), Numbers({163}));
    put(1);
    EXPECT_EQ(read(), Numbers({164}));
}

TEST_F(Story, a_reader_that_opens_late_gets_a_stale_slot_and_none_of_what_was_there)
{
    put(10);
    reader = RingBuffer_Open("r");
    EXPECT_EQ(value(COUNT), 0);
    EXPECT_EQ(read(), Numbers({0}));
    put(3);
    EXPECT_EQ(read(), from_to(12, 13));
    put(2);
    EXPECT_EQ(read(), from_to(14, 15));
}

TEST_F(Story, a_writer_that_opens_again_starts_at_slot_0_with_the_count_of_before)
{
    put(6);
    writer = RingBuffer_Open("w");
    EXPECT_EQ(value(COUNT), 6);
    put(2);
    EXPECT_EQ(value(COUNT), 8);
    EXPECT_EQ(slot_number(RingBuffer_GetWriteSlot(reader)), 2);
    EXPECT_EQ(read(), Numbers({0, 0, 0, 0, 0, 7, 8}));
}

TEST_F(Story, a_writer_that_opens_again_and_comes_to_the_mark_looks_like_none)
{
    put(5);
    EXPECT_EQ(read(), from_to(2, 5));
    writer = RingBuffer_Open("w");
    put(5);
    EXPECT_EQ(read(), Numbers());
    put(1);
    EXPECT_EQ(read(), from_to(6, 11));
}

TEST_F(Story, a_reader_that_opens_late_does_not_see_the_writer_come_to_slot_0)
{
    put(159);
    reader = RingBuffer_Open("r");
    put(1);
    EXPECT_EQ(read(), Numbers());
    put(1);
    EXPECT_EQ(read(), Numbers({161}));
}

TEST_F(Story, a_record_that_is_put_while_the_count_is_full_is_never_counted)
{
    put(2);
    read();
    put(158);
    EXPECT_EQ(begin(), 1);
    put(1);
    EXPECT_EQ(rest(), from_to(3, 160));
    EXPECT_EQ(value(COUNT), 1);
    EXPECT_EQ(read(), Numbers({2})); // the slot that is filled next
    put(2);
    EXPECT_EQ(read(), Numbers({163}));
}

TEST_F(Story, a_writer_that_comes_round_to_a_batch_has_newer_records_there_which_come_again)
{
    put(2);
    read();
    put(158);
    EXPECT_EQ(begin(), 1);
    EXPECT_EQ(next(), 3);
    put(5);
    EXPECT_EQ(next(), 164);
    EXPECT_EQ(next(), 165);
    EXPECT_EQ(rest(), from_to(6, 160));
    EXPECT_EQ(read(), Numbers({165}));
    put(1);
    EXPECT_EQ(read(), Numbers({166}));
}

TEST_F(Story, a_slot_at_the_mark_that_is_filled_meanwhile_gives_a_record_too_early)
{
    put(1);
    EXPECT_EQ(begin(), 1);
    put(1);
    EXPECT_EQ(rest(), Numbers({2}));
    EXPECT_EQ(read(), Numbers({0}));
    put(2);
    EXPECT_EQ(read(), Numbers({4}));
}

TEST_F(Story, both_sides_close_and_open_again_and_the_records_are_still_there)
{
    put(3);
    EXPECT_EQ(RingBuffer_Close(writer), 1);
    EXPECT_EQ(RingBuffer_Close(reader), 1);
    EXPECT_EQ(read(), from_to(2, 3));
}

TEST_F(Story, the_newest_records_can_be_sought_and_peeked_at)
{
    put(200);
    EXPECT_EQ(RingBuffer_MarkLastValue(reader), 1);
    EXPECT_EQ(RingBuffer_PeekValue(reader, 1)->rel_t, 200);
    EXPECT_EQ(RingBuffer_PeekValue(reader, 159)->rel_t, 42);
    EXPECT_EQ(RingBuffer_PeekValue(reader, 160)->rel_t, 41);
    EXPECT_EQ(RingBuffer_GetWriteSlot(reader)->rel_t, 41);
    EXPECT_EQ(RingBuffer_SeekValue(reader, 10)->rel_t, 191);
    EXPECT_EQ(next(), 192);
    EXPECT_EQ(RingBuffer_GetValuesLeft(reader), 158);
}
