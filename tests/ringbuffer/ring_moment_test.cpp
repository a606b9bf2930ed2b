// Goal: what the reader misses, or gets again, when one side acts between two loads or stores of
// the other. Nothing guards the ring, and these moments are kept as they are.
#include "tests/ringbuffer/parted_ring.hpp"
#include "tests/ringbuffer/ring_fixture.hpp"
#include "tests/ringbuffer/turns.hpp"

#include <sys/wait.h>
#include <unistd.h>

namespace
{

// The fixture: a new ring of which the reader has taken all records, 1 of them passed over, so that
// it is in step.
class Moment : public Dialogue, public Turns
{
  protected:
    Moment()
    {
        stm_link.ring = parts.ring();
        open();
        put(2);
        EXPECT_EQ(read(), Numbers({2}));
    }

    ~Moment() override { EXPECT_TRUE(parts.has_acted()) << "the moment has not come"; }
    Moment(const Moment &) = delete;
    Moment &operator=(const Moment &) = delete;

    int32_t count() const { return parts.ring()->count; }

    // Another process puts a record, announces it, and ends before it has counted it.
    void put_and_die()
    {
        const pid_t child = fork();
        if (child == 0) {
            parts.before_last_part_is_loaded([] { _exit(0); });
            put(1);
            _exit(1);
        }
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << "it has come further";
        ++latest;
    }

    PartedRing parts;
};

} // namespace

TEST_F(Moment, a_slot_is_filled_before_the_index_moves_on)
{
    PartedRing other(offsetof(RingBuffer, write_index));
    stm_link.ring = other.ring();
    other.before_last_part_is_stored([&other] {
        EXPECT_TRUE(same_record(other.ring()->slots[0], numbered_record(3)));
        EXPECT_EQ(other.ring()->write_index, 0);
    });
    put(1);
    EXPECT_TRUE(other.has_acted());
    EXPECT_EQ(other.ring()->write_index, 1);
}

TEST_F(Moment, a_put_while_a_value_is_taken_is_not_counted_and_its_record_comes_too_late)
{
    put(3);
    EXPECT_EQ(begin(), 1);
    parts.before_last_part_is_stored([this] { put(1); });
    EXPECT_EQ(rest(), from_to(3, 5));
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(read(), Numbers({0})); // the slot that is filled next
    put(2);
    EXPECT_EQ(read(), Numbers({8}));
}

TEST_F(Moment, a_put_while_a_value_is_taken_costs_the_oldest_record_of_the_next_batch)
{
    put(1);
    EXPECT_EQ(begin(), 1);
    parts.before_last_part_is_stored([this] { put(1); });
    EXPECT_EQ(rest(), Numbers({3}));
    put(2);
    EXPECT_EQ(read(), from_to(5, 6));
    put(1);
    EXPECT_EQ(read(), Numbers({7}));
}

TEST_F(Moment, a_value_taken_while_a_record_is_put_is_counted_on_and_comes_again)
{
    put(2);
    EXPECT_EQ(begin(), 1);
    parts.before_last_part_is_stored([this] { EXPECT_EQ(next(), 3); });
    put(1);
    EXPECT_EQ(next(), 4);
    EXPECT_EQ(count(), 3);
    EXPECT_EQ(read(), from_to(4, 5));
    put(1);
    EXPECT_EQ(read(), Numbers({6}));
}

TEST_F(Moment, a_reader_that_opens_while_a_record_is_put_gets_what_had_been_there_before)
{
    put(3);
    read();
    put(3);
    parts.before_last_part_is_stored([this] { reader = RingBuffer_Open("r"); });
    put(1);
    EXPECT_EQ(count(), 5);
    EXPECT_EQ(read(), from_to(6, 9));
}

TEST_F(Moment, a_reader_that_opens_while_the_first_record_is_counted_misses_the_next)
{
    reader = RingBuffer_Open("r");
    parts.before_last_part_is_stored([this] { reader = RingBuffer_Open("r"); });
    put(1);
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(read(), Numbers({0}));
    put(2);
    EXPECT_EQ(read(), Numbers({5}));
}

TEST_F(Moment, a_put_between_the_two_loads_of_a_mark_moves_the_batch_on_by_one)
{
    put(2);
    EXPECT_EQ(RingBuffer_NewValueAvailable(reader), 1);
    parts.before_first_part_is_loaded([this] { put(1); });
    EXPECT_EQ(RingBuffer_MarkLastValue(reader), 1);
    EXPECT_NE(RingBuffer_GetFirstValue(reader), nullptr);
    EXPECT_EQ(rest(), from_to(4, 5));
    put(1);
    EXPECT_EQ(read(), from_to(5, 6));
    put(1);
    EXPECT_EQ(read(), Numbers({7}));
}

TEST_F(Moment, a_batch_between_index_and_count_of_a_put_is_moved_on_by_one)
{
    put(2);
    parts.before_last_part_is_loaded([this] { EXPECT_EQ(read(), from_to(4, 5)); });
    put(1);
    EXPECT_EQ(count(), 2);
    put(1);
    EXPECT_EQ(read(), from_to(5, 6));
    put(1);
    EXPECT_EQ(read(), Numbers({7}));
}

TEST_F(Moment, a_single_record_read_between_its_index_and_its_count_is_an_empty_slot)
{
    parts.before_last_part_is_loaded([this] { EXPECT_EQ(read(), Numbers({0})); });
    put(1);
    EXPECT_EQ(read(), Numbers());
    put(2);
    EXPECT_EQ(read(), from_to(4, 5));
}

TEST_F(Moment, a_writer_that_dies_between_index_and_count_costs_the_oldest_record)
{
    put(2);
    put_and_die();
    EXPECT_EQ(read(), from_to(4, 5));
    put(1);
    EXPECT_EQ(read(), Numbers({6}));
}

TEST_F(Moment, a_writer_that_dies_behind_the_index_of_a_single_record_leaves_a_stale_slot)
{
    put_and_die();
    EXPECT_EQ(read(), Numbers({0}));
    put(2);
    EXPECT_EQ(read(), Numbers({5}));
}
