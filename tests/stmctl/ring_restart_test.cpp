// Goal: how the ring's reader handles moments in between: slots that become visible late, writers
// that end and begin, boards whose times wrap around, a writer that continues during a look.
#include "tests/stmctl/ring_reader_bench.hpp"

#include "stmctl/record/ring_slot.hpp"

#include <atomic>
#include <thread>

namespace
{

class ReaderMoment : public Reader
{
  protected:
    // The index announces a record, but its slot still shows what it held.
    void announce(int32_t number)
    {
        late_ = ring().write_index;
        late_record_ = numbered(number);
        ring().write_index = (late_ + 1) % SLOTS;
    }

    void show() { ring().slots[late_] = late_record_; }

    void put_record(const RingRecord &record)
    {
        ring().slots[ring().write_index] = record;
        ring().write_index = (ring().write_index + 1) % SLOTS;
    }

    static void look_in_vain(SlotFollower &reader, int looks)
    {
        for (int look = 0; look < looks; ++look) {
            ASSERT_EQ(seen(reader.look()), Seen{}) << look;
        }
    }

    // What a writer does in a thread of its own.
    void put_on(int32_t first, int32_t last, std::atomic<bool> &begun)
    {
        const std::atomic_ref<int32_t> write_index(ring().write_index);
        for (int32_t number = first; number <= last; ++number) {
            const int32_t index = write_index;
            ring().slots[index] = numbered(number);
            write_index = (index + 1) % SLOTS;
            begun = true;
        }
    }

    // What comes in enough looks for everything that is certain.
    static std::vector<int32_t> all_of(SlotFollower &reader)
    {
        std::vector<int32_t> numbers;
        for (int look = 0; look < 8; ++look) {
            const Seen now = seen(reader.look());
            EXPECT_FALSE(now.overrun || now.restarted);
            numbers = numbers + now.numbers;
        }
        return numbers;
    }

  private:
    int32_t late_ = 0;
    RingRecord late_record_ = {};
};

TEST_F(ReaderMoment, a_slot_that_shows_late_is_waited_for_through_three_looks)
{
    const RingView view(segment());
    put(1, 300);
    SlotFollower reader(view);
    announce(301);
    look_in_vain(reader, 3);
    show();
    EXPECT_EQ(seen(reader.look()), (Seen{range(301, 301)}));
}

TEST_F(ReaderMoment, looks_while_nothing_is_announced_are_not_in_vain)
{
    const RingView view(segment());
    put(1, 300);
    SlotFollower reader(view);
    look_in_vain(reader, 10);
    announce(301);
    look_in_vain(reader, 3);
    show();
    EXPECT_EQ(seen(reader.look()), (Seen{range(301, 301)}));
}

TEST_F(ReaderMoment, looks_in_vain_before_an_overrun_do_not_count_after_it)
{
    const RingView view(segment());
    put(1, 300);
    SlotFollower reader(view);
    announce(301);
    look_in_vain(reader, 3);
    show();
    put(302, 700);
    EXPECT_EQ(seen(reader.look()), (Seen{range(542, 700), true, false}));
    announce(701);
    look_in_vain(reader, 3);
    show();
    EXPECT_EQ(seen(reader.look()), (Seen{range(701, 701)}));
}

TEST_F(ReaderMoment, what_a_writer_has_left_reaches_up_to_the_slot_before_the_last)
{
    const RingView view(segment());
    put(1, 300); // 140 is filled next
    SlotFollower reader(view);
    put(301, 319);
    begin_anew();
    put(1001, 1002);
    EXPECT_EQ(settled(reader), (Seen{range(301, 319) + range(1001, 1002), false, true}));
}

TEST_F(ReaderMoment, what_a_writer_has_left_ends_where_times_do_not_rise)
{
    const RingView view(segment());
    for (const int32_t number : {405, 410}) {
        ring() = {};
        put(1, 300);
        SlotFollower reader(view);
        put_record(numbered(401));
        put_record(numbered(410));
        put_record(numbered(number, 7));
        begin_anew();
        put(1001, 1002);
        EXPECT_EQ(settled(reader),
                  (Seen{range(401, 401) + range(410, 410) + range(1001, 1002), false, true}))
            << number;
    }
}

TEST_F(ReaderMoment, times_wrap_around_in_what_a_writer_has_left)
{
    const RingView view(segment());
    put(1, 299);
    put_record(numbered(INT32_MAX));
    SlotFollower reader(view);
    put_record(numbered(INT32_MIN));
    put_record(numbered(INT32_MIN + 1));
    begin_anew();
    put(1001, 1002);
    EXPECT_EQ(settled(reader),
              (Seen{range(INT32_MIN, INT32_MIN + 1) + range(1001, 1002), false, true}));
}

TEST_F(ReaderMoment, the_first_slot_of_a_restart_may_show_late)
{
    const RingView view(segment());
    put(1, 300);
    SlotFollower reader(view);
    begin_anew();
    announce(1001);
    put(1002, 1005);
    EXPECT_EQ(settled(reader), (Seen{{}, false, true}));
    show();
    EXPECT_EQ(settled(reader), (Seen{range(1001, 1005)}));
}

TEST_F(ReaderMoment, what_a_writer_has_left_is_not_taken_for_a_record_that_shows_late)
{
    const RingView view(segment());
    put(1, 300);
    SlotFollower reader(view);
    put(301, 305); // in the slots 140 to 144
    begin_anew();
    put(1, 10);
    look_in_vain(reader, 2);
    const Seen restart = seen(reader.look());
    EXPECT_TRUE(restart.restarted);
    EXPECT_EQ(restart.numbers, range(301, 305) + range(1, 10));
    put(11, 141);
    EXPECT_EQ(seen(reader.look()), (Seen{range(11, 141)}));
    announce(142);
    look_in_vain(reader, 1);
    show();
    EXPECT_EQ(seen(reader.look()), (Seen{range(142, 142)}));
}

TEST_F(ReaderMoment, damaged_record_is_delivered_after_an_overrun_too)
{
    const RingView view(segment());
    put(1, 160);
    SlotFollower reader(view);
    put(161, 500); // 20 is filled next
    ring().slots[100].U2e = 1;
    EXPECT_EQ(seen(reader.look()), (Seen{range(342, 500), true, false}));
}

TEST_F(ReaderMoment, a_new_board_that_has_passed_the_position_is_delivered_from_its_start)
{
    const RingView view(segment());
    SlotFollower reader(view);
    put(5001, 5050);
    EXPECT_EQ(seen(reader.look()), (Seen{range(5001, 5050)}));
    begin_anew();
    put(1, 60);
    EXPECT_EQ(seen(reader.look()), (Seen{range(1, 60), false, true}));
}

TEST_F(ReaderMoment, a_slot_in_which_a_writer_died_is_left_out_once_the_new_one_has_passed)
{
    const RingView view(segment());
    SlotFollower reader(view);
    put(1, 50);
    EXPECT_EQ(seen(reader.look()), (Seen{range(1, 50)}));
    put(51, 53);
    begin_to_put(54);
    begin_anew();
    put(1001, 1051);
    EXPECT_EQ(seen(reader.look()), (Seen{range(53, 53) + range(1001, 1051), false, true}));
}

// Neither of the two is told by the index, and the times of a board may step back, too.
TEST_F(ReaderMoment, slots_come_in_their_order_after_a_pause_with_an_overrun_and_a_restart)
{
    const RingView view(segment());
    SlotFollower reader(view);
    put(1, 10);
    EXPECT_EQ(seen(reader.look()), (Seen{range(1, 10)}));
    put(11, 270); // 110 is filled next
    begin_anew();
    put(1001, 1005);
    EXPECT_EQ(seen(reader.look()),
              (Seen{range(167, 270) + range(111, 160) + range(1001, 1005), true, false}));
    put(1006, 1007);
    EXPECT_EQ(seen(reader.look()), (Seen{range(1006, 1007)}));
}

// However far the writer has got, everything from the position on is delivered once it rests.
TEST_F(ReaderMoment, a_writer_that_continues_while_the_reader_begins_loses_nothing)
{
    const RingView view(segment());
    int32_t next = 1;
    for (int turn = 0; turn < 100; ++turn) {
        begin_anew();
        const int32_t last = next + 149;
        std::atomic<bool> begun = false;
        std::thread writer([&] { put_on(next, last, begun); });
        while (!begun) {
            std::this_thread::yield();
        }
        SlotFollower reader(view);
        writer.join();
        const std::vector<int32_t> now = all_of(reader);
        if (!now.empty()) {
            ASSERT_EQ(now, range(now.front(), last)) << turn;
        }
        put(last + 1, last + 1);
        ASSERT_EQ(all_of(reader), range(last + 1, last + 1)) << turn;
        next = last + 2;
    }
}

TEST_F(ReaderMoment, a_writer_that_continues_while_its_restart_is_noticed_loses_nothing)
{
    const RingView view(segment());
    SlotFollower reader(view);
    int32_t next = 1;
    for (int turn = 0; turn < 100; ++turn) {
        put(next, next + 149);
        ASSERT_EQ(settled(reader), (Seen{range(next, next + 149), false, turn > 0})) << turn;
        begin_anew();
        put(next + 150, next + 151);
        look_in_vain(reader, 2);
        std::atomic<bool> begun = false;
        std::thread writer([&] { put_on(next + 152, next + 280, begun); });
        while (!begun) {
            std::this_thread::yield();
        }
        Seen now = seen(reader.look());
        writer.join();
        ASSERT_TRUE(now.restarted) << turn;
        ASSERT_EQ(now.numbers + all_of(reader), range(next + 150, next + 280)) << turn;
        begin_anew();
        next += 281;
    }
}

TEST_F(ReaderMoment, last_slot_that_was_complete_before_its_index_is_not_a_restart)
{
    const RingView view(segment());
    put(1, 159);
    ring().slots[159] = numbered(160);
    SlotFollower reader(view);
    put(160, 165);
    EXPECT_EQ(all_of(reader), range(160, 165));
    begin_anew();
    put(166, 170);
    EXPECT_EQ(settled(reader), (Seen{range(166, 170), false, true}));
}

TEST_F(ReaderMoment, last_slot_of_the_previous_round_is_not_a_record_of_a_new_writer)
{
    const RingView view(segment());
    put(1, 319);
    SlotFollower reader(view);
    begin_anew();
    put(320, 325);
    EXPECT_EQ(settled(reader), (Seen{range(320, 325), false, true}));
}

} // namespace
