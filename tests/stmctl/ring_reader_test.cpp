// Goal: the ring's reader delivers every record once and in order, and reports what it cannot
// deliver, whatever writers do between two looks: wrap around, restart, die in the middle of a
// slot.
#include "tests/stmctl/ring_reader_bench.hpp"

#include "stmctl/process/failure.hpp"

#include <random>

namespace
{

TEST_F(Reader, needs_a_segment_that_can_be_attached)
{
    try {
        const RingView view(-1);
        FAIL() << "attached";
    } catch (const Failure &failure) {
        EXPECT_EQ(failure.status(), ExitStatus::not_there);
        EXPECT_EQ(std::string(failure.what()),
                  "the ring's segment cannot be attached: Invalid argument");
    }
}

TEST_F(Reader, begins_with_the_next_record)
{
    put(1, 200);
    const RingView view(segment());
    SlotFollower reader(view);
    EXPECT_EQ(seen(reader.look()), Seen{});
    put(201, 203);
    EXPECT_EQ(seen(reader.look()), (Seen{range(201, 203)}));
    EXPECT_EQ(seen(reader.look()), Seen{});
}

TEST_F(Reader, everything_is_all_but_the_slot_that_is_filled_next)
{
    const RingView view(segment());
    EXPECT_EQ(seen(SlotFollower(view).everything()), Seen{});
    put(1, 5);
    EXPECT_EQ(seen(SlotFollower(view).everything()), (Seen{range(1, 5)}));
    put(6, 400);
    SlotFollower reader(view);
    EXPECT_EQ(seen(reader.everything()), (Seen{range(242, 400)}));
    put(401, 402);
    EXPECT_EQ(seen(reader.look()), (Seen{range(401, 402)}));
}

TEST_F(Reader, everything_is_without_what_an_earlier_writer_has_left)
{
    for (const int32_t again : {1, 200, 5000}) { // the board may have restarted or continued
        ring() = {};
        put(401, 800);
        begin_anew();
        put(again, again + 29);
        const RingView view(segment());
        SlotFollower reader(view);
        EXPECT_EQ(seen(reader.everything()), (Seen{range(again, again + 29)})) << again;
        put(again + 30, again + 200);
        EXPECT_EQ(seen(SlotFollower(view).everything()), (Seen{range(again + 42, again + 200)}));
    }
}

TEST_F(Reader, everything_is_without_an_earlier_writer_s_slots_that_rise)
{
    for (const int32_t again : {1, 162, 5000}) {
        ring() = {};
        put(1, 160);
        begin_anew();
        put(again, again + 29);
        const RingView view(segment());
        EXPECT_EQ(seen(SlotFollower(view).everything()), (Seen{range(again, again + 29)})) << again;
    }
}

TEST_F(Reader, everything_is_without_what_several_earlier_writers_have_left)
{
    put(1, 160);
    begin_anew();
    put(1001, 1100);
    begin_anew();
    put(161, 165); // as if it continued where the first one ended
    const RingView view(segment());
    EXPECT_EQ(seen(SlotFollower(view).everything()), (Seen{range(161, 165)}));
}

TEST_F(Reader, everything_includes_a_board_that_restarted_under_one_writer)
{
    put(1, 250);
    put(1, 20); // from slot 90 on
    const RingView view(segment());
    EXPECT_EQ(seen(SlotFollower(view).everything()), (Seen{range(112, 250) + range(1, 20)}));
}

TEST_F(Reader, a_writer_that_has_written_nothing_yet_is_known_by_its_first_record)
{
    put(1, 400);
    begin_anew();
    const RingView view(segment());
    SlotFollower reader(view);
    EXPECT_EQ(seen(reader.everything()).numbers.size(), 159U);
    put(1, 3);
    EXPECT_EQ(seen(reader.look()), (Seen{range(1, 3), false, true}));
    put(4, 5);
    EXPECT_EQ(seen(reader.look()), (Seen{range(4, 5)}));
}

TEST_F(Reader, a_writer_that_has_just_wrapped_around_continues)
{
    put(1, 320);
    const RingView view(segment());
    SlotFollower reader(view);
    EXPECT_EQ(seen(reader.everything()), (Seen{range(162, 320)}));
    put(321, 323);
    EXPECT_EQ(seen(reader.look()), (Seen{range(321, 323)}));
}

TEST_F(Reader, the_first_record_of_a_new_ring_is_not_a_new_writer)
{
    const RingView view(segment());
    SlotFollower reader(view);
    reader.everything();
    put(7, 9);
    EXPECT_EQ(seen(reader.look()), (Seen{range(7, 9)}));
}

TEST_F(Reader, bursts_up_to_the_whole_ring_but_one_are_delivered_from_every_position)
{
    const RingView view(segment());
    SlotFollower reader(view);
    int32_t next = 1;
    for (int32_t burst : {1, 2, 85, 158, 159, 159, 159, 3, 100}) {
        for (int turn = 0; turn < SLOTS; ++turn) {
            put(next, next + burst - 1);
            ASSERT_EQ(seen(reader.look()), (Seen{range(next, next + burst - 1)})) << turn;
            next += burst;
        }
    }
}

TEST_F(Reader, a_writer_that_wrapped_around_is_an_overrun)
{
    const RingView view(segment());
    SlotFollower reader(view);
    put(1, 10);
    reader.look();
    put(11, 170);
    EXPECT_EQ(seen(reader.look()), (Seen{range(12, 170), true, false}));
    put(171, 500);
    EXPECT_EQ(seen(reader.look()), (Seen{range(342, 500), true, false}));
    put(501, 502);
    EXPECT_EQ(seen(reader.look()), (Seen{range(501, 502)}));
}

TEST_F(Reader, a_restart_is_noticed_whatever_the_new_writer_has_written)
{
    for (int32_t before = 1; before < SLOTS; ++before) {
        for (const int32_t put_anew : {0, 1, before - 1, before, std::min(before + 1, 158), 158}) {
            ring() = {};
            const RingView view(segment());
            SlotFollower reader(view);
            put(1, before);
            ASSERT_EQ(settled(reader), (Seen{range(1, before)}));
            begin_anew();
            put(1001, 1000 + put_anew);
            ASSERT_EQ(settled(reader), (Seen{range(1001, 1000 + put_anew), false, true}))
                << before << " and " << put_anew;
            put(2001, 2003);
            ASSERT_EQ(settled(reader), (Seen{range(2001, 2003)}));
        }
    }
}

TEST_F(Reader, what_the_previous_writer_has_left_is_delivered_first)
{
    const RingView view(segment());
    put(1, 400); // 80 is filled next
    SlotFollower reader(view);
    put(401, 405);
    begin_anew();
    put(1001, 1010);
    EXPECT_EQ(settled(reader), (Seen{range(401, 405) + range(1001, 1010), false, true}));
    put(1011, 1012);
    EXPECT_EQ(settled(reader), (Seen{range(1011, 1012)}));
    begin_anew();
    put(2001, 2100);
    EXPECT_EQ(settled(reader), (Seen{range(2001, 2100), false, true}));
}

TEST_F(Reader, a_slot_in_which_a_writer_died_is_not_one_of_its_records)
{
    const RingView view(segment());
    put(1, 400);
    SlotFollower reader(view);
    put(401, 402);
    begin_to_put(403);
    begin_anew();
    put(1001, 1003);
    EXPECT_EQ(settled(reader), (Seen{range(401, 402) + range(1001, 1003), false, true}));
    begin_anew();
    put(2001, 2090);
    EXPECT_EQ(settled(reader), (Seen{range(2001, 2090), false, true}));
}

TEST_F(Reader, records_of_an_old_board_are_not_those_of_a_new_one)
{
    const RingView view(segment());
    put(5001, 5160);
    begin_anew();
    put(1, 50);
    SlotFollower reader(view);
    begin_anew();
    put(60, 62);
    EXPECT_EQ(settled(reader), (Seen{range(60, 62), false, true}));
}

TEST_F(Reader, a_slot_that_is_visible_after_its_index_is_waited_for)
{
    const RingView view(segment());
    put(1, 300);
    SlotFollower reader(view);
    for (int32_t number = 301; number < 800; ++number) {
        const int32_t slot = ring().write_index;
        const RingRecord old = ring().slots[slot];
        put(number, number);
        ring().slots[slot] = old;
        ASSERT_EQ(seen(reader.look()), Seen{});
        ring().slots[slot] = numbered(number);
        ASSERT_EQ(seen(reader.look()), (Seen{range(number, number)}));
    }
}

TEST_F(Reader, a_slot_that_was_complete_before_its_index_is_not_waited_for_forever)
{
    const RingView view(segment());
    put(1, 300);
    ring().slots[ring().write_index] = numbered(301);
    SlotFollower reader(view);
    put(301, 301);
    const Seen late = settled(reader);
    EXPECT_EQ(late, (Seen{range(301, 301)}));
    put(302, 302);
    EXPECT_EQ(seen(reader.look()), (Seen{range(302, 302)}));
}

TEST_F(Reader, damaged_record_is_delivered_as_it_is)
{
    const RingView view(segment());
    SlotFollower reader(view);
    put(1, 2);
    ring().slots[0].U2e = 1;
    EXPECT_EQ(seen(reader.look()), (Seen{range(1, 2)}));
}

TEST_F(Reader, index_outside_the_ring_is_a_failure)
{
    const RingView view(segment());
    SlotFollower reader(view);
    for (const int32_t index : {-1, 160, INT32_MIN, INT32_MAX}) {
        ring().write_index = index;
        EXPECT_THROW(reader.look(), Failure);
        EXPECT_THROW(SlotFollower(view).everything(), Failure);
    }
    ring().write_index = 159;
    EXPECT_NO_THROW(reader.look());
}

TEST_F(Reader, a_board_that_repeats_itself_is_delivered_again)
{
    const RingView view(segment());
    put(1, 58);
    SlotFollower reader(view);
    for (int run = 0; run < 5; ++run) {
        begin_anew();
        ASSERT_EQ(settled(reader), (Seen{{}, false, true}));
        for (int32_t number = 1; number < 750; number += 29) {
            put(number, number + 28);
            ASSERT_EQ(settled(reader), (Seen{range(number, number + 28)}));
        }
    }
}

TEST_F(Reader, the_index_of_another_program_does_not_end_it)
{
    const RingView view(segment());
    put(1, 300);
    SlotFollower reader(view);
    ring().write_index = 30;
    settled(reader);
    put(301, 305);
    const std::vector<int32_t> numbers = settled(reader).numbers;
    ASSERT_GE(numbers.size(), 5U);
    EXPECT_EQ(std::vector<int32_t>(numbers.end() - 5, numbers.end()), range(301, 305));
}

// No record comes twice or out of order, and every missing one is reported.
TEST_F(Reader, bursts_restarts_and_deaths_in_any_order)
{
    std::mt19937 random(3);
    const auto below = [&](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    const RingView view(segment());
    SlotFollower reader(view);
    int32_t next = 1;
    int32_t delivered = 0;
    const auto put_some = [&](int32_t size) {
        put(next, next + size - 1);
        next += size;
    };
    for (int look = 0; look < 50000; ++look) {
        const int32_t first = next;
        const bool restarts = below(10) == 0;
        put_some(below(restarts ? 60 : below(20) == 0 ? 500 : 100));
        if (restarts) {
            if (below(2) == 0) {
                begin_to_put(next++);
            }
            begin_anew();
            put_some(below(99));
        }
        const Seen now = settled(reader);
        for (const int32_t number : now.numbers) {
            ASSERT_GT(number, delivered) << "at look " << look;
            ASSERT_GE(number, first) << "an old one at look " << look;
            delivered = number;
        }
        if (!restarts && !now.overrun) {
            ASSERT_EQ(now.numbers, range(first, next - 1)) << "at look " << look;
        }
    }
}

} // namespace
