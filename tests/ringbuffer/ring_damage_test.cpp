// Goal: without a ring, with another side's handle, and in a segment that somebody has damaged,
// every operation fails as it always did and touches nothing outside the slots.
#include "tests/ringbuffer/ring_fixture.hpp"

namespace
{

constexpr int READER = 2;

class NoWriter : public Ring, public testing::WithParamInterface<int>
{
};

class NoReader : public Ring, public testing::WithParamInterface<int>
{
};

class DamagedIndex : public Ring, public testing::WithParamInterface<int>
{
};

void expect_failures_of_the_reader(int handle)
{
    EXPECT_EQ(RingBuffer_NewValueAvailable(handle), -1);
    EXPECT_EQ(RingBuffer_MarkLastValue(handle), -1);
    EXPECT_EQ(RingBuffer_GetFirstValue(handle), nullptr);
    EXPECT_EQ(RingBuffer_GetNextValue(handle), nullptr);
    EXPECT_EQ(RingBuffer_GetValuesLeft(handle), -1);
    EXPECT_EQ(RingBuffer_GetWriteSlot(handle), nullptr);
    EXPECT_EQ(RingBuffer_SeekValue(handle, 1), nullptr);
    EXPECT_EQ(RingBuffer_PeekValue(handle, 1), nullptr);
}

} // namespace

TEST_F(Ring, that_is_not_attached_fails_everywhere_without_a_word)
{
    stm_link.ring = nullptr;
    const RingRecord record = numbered_record(1);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (const char *mode : {"w", "r", "x", ""}) {
        EXPECT_EQ(RingBuffer_Open(mode), -1);
    }
    for (const int handle : {-1, 0, 1, 2, 3}) {
        EXPECT_EQ(RingBuffer_Close(handle), -1);
        EXPECT_EQ(RingBuffer_PutValue(handle, &record), -1);
        expect_failures_of_the_reader(handle);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(unchanged());
}

TEST_P(NoWriter, puts_nothing)
{
    const RingRecord record = numbered_record(1);
    EXPECT_EQ(RingBuffer_PutValue(GetParam(), &record), -1);
    EXPECT_TRUE(unchanged());
}

INSTANTIATE_TEST_SUITE_P(Each, NoWriter, testing::Values(-1, 0, 2, 3, 257, INT_MIN, INT_MAX));

TEST_P(NoReader, reads_nothing)
{
    expect_failures_of_the_reader(GetParam());
    EXPECT_TRUE(unchanged());
}

INSTANTIATE_TEST_SUITE_P(Each, NoReader, testing::Values(-1, 0, 1, 3, 258, INT_MIN, INT_MAX));

TEST_P(DamagedIndex, of_the_writer_takes_no_record_and_changes_nothing)
{
    given({{WRITE_INDEX, GetParam()}});
    const RingRecord record = numbered_record(1);
    EXPECT_EQ(RingBuffer_PutValue(1, &record), -1);
    EXPECT_EQ(RingBuffer_GetWriteSlot(READER), nullptr);
    EXPECT_TRUE(unchanged());
}

TEST_P(DamagedIndex, of_the_writer_is_mended_by_the_next_open)
{
    given({{WRITE_INDEX, GetParam()}});
    EXPECT_EQ(RingBuffer_Open("w"), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 0}}));
    const RingRecord record = numbered_record(1);
    EXPECT_EQ(RingBuffer_PutValue(1, &record), 1);
    EXPECT_TRUE(became({{WRITE_INDEX, 1}, {COUNT, 20}}, {{0, record}}));
}

INSTANTIATE_TEST_SUITE_P(Each, DamagedIndex,
                         testing::Values(-1, 160, 161, 161 + 159, -160, INT_MIN, INT_MAX));

namespace
{

// A mark and a distance that lead to no slot, and the place that is stored all the same: once 160
// is added if the difference is negative, and all of it wraps at 32 bits.
struct Nowhere {
    int mark;
    int n;
    int place;
};

constexpr Nowhere NOWHERES[] = {
    {0, 161, -1},
    {33, 194, -1},
    {33, 1000, -807},
    {33, -127, 160},
    {159, -1, 160},
    {160, 0, 160},
    {-1, 160, -1},
    {-161, 0, -1},
    {320, 160, 160},
    {0, INT_MAX, INT_MIN + 161},
    {0, INT_MIN, INT_MIN + 160},
    {INT_MIN, 0, INT_MIN + 160},
    {INT_MIN, 1, INT_MAX},
    {INT_MAX, 0, INT_MAX},
    {INT_MAX, -1, INT_MIN + 160},
    {-1, INT_MIN, INT_MAX},
};

// Damaged, but it leads to a slot: what counts is the result.
constexpr Nowhere SOMEWHERES[] = {
    {-1, 0, 159},
    {-160, 0, 0},
    {160, 1, 159},
    {319, 160, 159},
    {33, -126, 159},
    {0, -159, 159},
    {INT_MAX, INT_MAX, 0},
    {INT_MIN, INT_MIN, 0},
    {-1, 159, 0},
    {INT_MIN, -INT_MAX, 159},
    {INT_MAX, INT_MAX - 159, 159},
};

class LeadsNowhere : public Ring, public testing::WithParamInterface<Nowhere>
{
};

class LeadsToASlot : public Ring, public testing::WithParamInterface<Nowhere>
{
};

} // namespace

TEST_P(LeadsNowhere, when_the_first_value_is_asked_for)
{
    given({{MARK, GetParam().mark}, {VALUES_LEFT, GetParam().n}});
    EXPECT_EQ(RingBuffer_GetFirstValue(READER), nullptr);
    EXPECT_TRUE(became({{READ_POS, GetParam().place}}));
}

TEST_P(LeadsNowhere, when_it_is_sought)
{
    given({{MARK, GetParam().mark}});
    EXPECT_EQ(RingBuffer_SeekValue(READER, GetParam().n), nullptr);
    EXPECT_TRUE(became({{READ_POS, GetParam().place}}));
}

TEST_P(LeadsNowhere, when_one_peeks_at_it)
{
    given({{MARK, GetParam().mark}});
    EXPECT_EQ(RingBuffer_PeekValue(READER, GetParam().n), nullptr);
    EXPECT_TRUE(unchanged());
}

INSTANTIATE_TEST_SUITE_P(Each, LeadsNowhere, testing::ValuesIn(NOWHERES));

TEST_P(LeadsToASlot, however_odd_mark_and_distance_are)
{
    given({{MARK, GetParam().mark}, {VALUES_LEFT, GetParam().n}});
    EXPECT_EQ(slot_number(RingBuffer_PeekValue(READER, GetParam().n)), GetParam().place);
    EXPECT_TRUE(unchanged());
    EXPECT_EQ(slot_number(RingBuffer_GetFirstValue(READER)), GetParam().place);
    EXPECT_TRUE(became({{READ_POS, GetParam().place}}));
    given({{READ_POS, 77}});
    EXPECT_EQ(slot_number(RingBuffer_SeekValue(READER, GetParam().n)), GetParam().place);
    EXPECT_TRUE(became({{READ_POS, GetParam().place}}));
}

INSTANTIATE_TEST_SUITE_P(Each, LeadsToASlot, testing::ValuesIn(SOMEWHERES));

TEST_F(Ring, a_read_position_beyond_the_slots_is_followed_by_slot_0)
{
    for (const int position : {159, 160, 1000, INT_MAX - 1}) {
        given({{READ_POS, position}, {COUNT, 19}, {VALUES_LEFT, 11}});
        EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 0) << position;
        EXPECT_TRUE(became({{READ_POS, 0}, {COUNT, 18}, {VALUES_LEFT, 10}}));
    }
}

TEST_F(Ring, a_read_position_of_minus_1_is_followed_by_slot_0)
{
    given({{READ_POS, -1}});
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 0);
    EXPECT_TRUE(became({{READ_POS, 0}, {COUNT, 18}, {VALUES_LEFT, 10}}));
}

TEST_F(Ring, a_read_position_far_below_the_slots_gives_none_and_counts_all_the_same)
{
    constexpr std::pair<int, int> POSITIONS[] = {
        {-2, -1}, {-160, -159}, {INT_MIN, INT_MIN + 1}, {INT_MAX, INT_MIN}};
    for (const auto &[position, next] : POSITIONS) {
        given({{READ_POS, position}, {COUNT, 19}, {VALUES_LEFT, 11}});
        EXPECT_EQ(RingBuffer_GetNextValue(READER), nullptr) << position;
        EXPECT_TRUE(became({{READ_POS, next}, {COUNT, 18}, {VALUES_LEFT, 10}}));
    }
}

TEST_F(Ring, reading_on_from_a_place_before_the_slots_comes_to_slot_0)
{
    given({{READ_POS, -4}});
    EXPECT_EQ(RingBuffer_GetNextValue(READER), nullptr);
    EXPECT_EQ(RingBuffer_GetNextValue(READER), nullptr);
    EXPECT_EQ(RingBuffer_GetNextValue(READER), nullptr);
    EXPECT_EQ(slot_number(RingBuffer_GetNextValue(READER)), 0);
    EXPECT_TRUE(became({{READ_POS, 0}, {COUNT, 15}, {VALUES_LEFT, 7}}));
}

TEST_F(Ring, a_damaged_read_position_is_mended_by_the_next_first_value)
{
    given({{READ_POS, INT_MIN}});
    EXPECT_EQ(slot_number(RingBuffer_GetFirstValue(READER)), 22);
    EXPECT_TRUE(became({{READ_POS, 22}}));
}
