// Goal: a checksum that is wrong ends the batch and nothing else, each failure of the ring ends the
// read-out with its own text, and the ring is closed where it always was.
#include "tests/ringbuffer/reader_fixture.hpp"

namespace
{

const std::string CANNOT_OPEN = say("Cannot open Ringbuffer for read\n");
const std::string NO_VALUE = say("RingBuffer_GetFirstValue()\n");

// A record whose moved fields differ: what came is right, what is stored cannot be.
Bytes reordered_record()
{
    return with_checksum({0x55, 0x01, 0x2C, 0x01, 0xE8, 0x03, 0x00, 0x00, 0x08, 0x00, 0x00, 0x00,
                          0x07, 0x00, 0x00, 0x00, 0x09, 0x00, 0x00, 0x00, 0x0A, 0x00, 0x00, 0x00,
                          0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFD, 0xFF, 0xFF, 0xFF,
                          0xFC, 0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x03, 0x00, 0xC8, 0x09});
}

const std::string WRONG = say("Wrong checksum detected (crc = 4416, checksum= A27D)\n");

// The fixture: somebody else has said that a reader holds the ring, so that closing shows.
class HeldRing : public RingReadout
{
  protected:
    HeldRing()
    {
        in_sleep(1, [this] { set({READER_OPEN, 1}); });
    }

    bool is_closed() const { return value(READER_OPEN) == 0; }
};

class Spoiled : public RingReadout, public testing::WithParamInterface<size_t>
{
};

class OtherFormat : public HeldRing, public testing::WithParamInterface<int>
{
};

} // namespace

TEST_F(RingReadout, that_cannot_be_opened_says_so_and_closes_nothing)
{
    set({READER_OPEN, 1});
    const Bytes expected = segment;
    read(TEXT);
    EXPECT_TRUE(happened({CANNOT_OPEN}));
    EXPECT_EQ(messages, Transcript({CANNOT_OPEN}));
    EXPECT_TRUE(same_segment(segment, expected));
}

TEST_F(RingReadout, that_cannot_be_opened_has_its_header_all_the_same)
{
    set({READER_OPEN, 1});
    read(CSV);
    EXPECT_TRUE(happened({HEADER, CANNOT_OPEN}));
}

TEST_F(RingReadout, that_is_not_attached_cannot_be_opened)
{
    stm_link.ring = nullptr;
    read(CSV);
    EXPECT_TRUE(happened({HEADER, CANNOT_OPEN}));
}

TEST_F(RingReadout, reports_a_record_whose_fields_have_moved_as_wrong)
{
    in_sleep(1, [] {
        put_good(1, 1);
        put(reordered_record());
    });
    read(TEXT);
    EXPECT_TRUE(happened(joined({idle(1), {WRONG}, idle(4999), {TIMEOUT}})));
    EXPECT_EQ(messages, Transcript({WRONG, TIMEOUT}));
}

TEST_F(RingReadout, passes_over_the_oldest_record_without_a_look_at_its_checksum)
{
    in_sleep(1, [] {
        put(reordered_record());
        put_good(2, 3);
    });
    read(CSV);
    EXPECT_TRUE(happened(joined({{HEADER}, idle(1), csv_lines(2, 3), idle(4999), {TIMEOUT}})));
}

TEST_F(HeldRing, keeps_the_ring_open_when_a_checksum_is_wrong)
{
    in_sleep(2, [] {
        put_good(1, 1);
        put(reordered_record());
    });
    read(TEXT);
    EXPECT_TRUE(happened(joined({idle(2), {WRONG}, idle(4998), {TIMEOUT}})));
    EXPECT_FALSE(is_closed());
}

TEST_F(RingReadout, reads_what_a_wrong_checksum_left_with_the_next_batch)
{
    in_sleep(1, [] {
        put_good(1, 2);
        put(reordered_record());
        put_good(4, 5);
    });
    in_sleep(2, [this] { EXPECT_EQ(value(COUNT), 3); });
    in_sleep(3, [] { put_good(6, 6); });
    read(TEXT);
    EXPECT_TRUE(happened(joined(
        {idle(1), text_lines(2, 2), {WRONG}, idle(2), text_lines(4, 6), idle(4997), {TIMEOUT}})));
}

TEST_F(RingReadout, reports_each_wrong_checksum_of_each_batch)
{
    in_sleep(1, [] {
        put_good(1, 1);
        put(reordered_record());
        put(reordered_record());
    });
    in_sleep(2, [] { put_good(4, 4); });
    read(TEXT);
    EXPECT_TRUE(happened(joined({idle(1), {WRONG}, idle(1), {WRONG}, idle(4998), {TIMEOUT}})));
}

TEST_F(RingReadout, of_a_single_first_record_finds_the_empty_slot_behind_it)
{
    in_sleep(1, [] { put_good(1, 1); });
    read(TEXT);
    EXPECT_TRUE(happened(joined({idle(1),
                                 {say("Wrong checksum detected (crc = F740, checksum= 0)\n")},
                                 idle(4999),
                                 {TIMEOUT}})));
}

TEST_F(RingReadout, of_records_that_are_there_already_begins_behind_the_write_index)
{
    put_good(1, 200);
    read(TEXT);
    EXPECT_TRUE(happened(joined({text_lines(42, 42), idle(5000), {TIMEOUT}})));
}

TEST_F(RingReadout, takes_a_wrong_marker_for_a_record_if_its_checksum_is_right)
{
    Bytes record = good_record(2);
    record.resize(46);
    record[0] = 0x54;
    in_sleep(1, [&record] {
        put_good(1, 1);
        put(with_checksum(record));
    });
    read(5);
    EXPECT_TRUE(happened(joined({idle(5000), {TIMEOUT}})));
}

TEST_P(Spoiled, byte_of_a_slot_is_noticed)
{
    in_sleep(1, [this] {
        put_good(1, 2);
        segment[48 + GetParam()] ^= 0x10;
    });
    read(TEXT);
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].find("say 0 \"Wrong checksum detected (crc = "), 0U);
}

INSTANTIATE_TEST_SUITE_P(Each, Spoiled, testing::Range<size_t>(0, 48));

TEST_P(OtherFormat, reports_a_ring_that_is_gone_with_its_handle)
{
    in_sleep(3, [] { stm_link.ring = nullptr; });
    read(GetParam());
    const std::string gone = say("Error: RingBuffer_NewValueAvailable() (fd: 2)\n");
    EXPECT_TRUE(
        happened(joined({GetParam() == CSV ? Transcript{HEADER} : Transcript{}, idle(3), {gone}})));
    EXPECT_EQ(messages.back(), gone);
}

TEST_P(OtherFormat, reports_a_first_value_that_is_nowhere_and_closes_the_ring)
{
    in_sleep(3, [this] { set({WRITE_INDEX, 500}); });
    read(GetParam());
    EXPECT_TRUE(happened(
        joined({GetParam() == CSV ? Transcript{HEADER} : Transcript{}, idle(3), {NO_VALUE}})));
    EXPECT_EQ(messages.back(), NO_VALUE);
    EXPECT_TRUE(is_closed());
}

INSTANTIATE_TEST_SUITE_P(Each, OtherFormat, testing::Values(-1, 0, 1, 2, 3, 4, 5));

TEST_F(HeldRing, reports_a_next_value_that_is_nowhere_in_the_words_of_the_first)
{
    in_sleep(2, [] { put_good(1, 3); });
    after_output = [this] { set({READ_POS, -5}); };
    stm_ringbuffer_readout(TEXT, poll, output_and_then);
    EXPECT_TRUE(happened(joined({idle(2), text_lines(2, 2), {NO_VALUE}})));
    EXPECT_TRUE(is_closed());
}

TEST_F(HeldRing, takes_a_ring_that_goes_during_a_batch_for_the_end_of_the_batch)
{
    in_sleep(2, [] { put_good(1, 3); });
    after_output = [] { stm_link.ring = nullptr; };
    stm_ringbuffer_readout(TEXT, poll, output_and_then);
    EXPECT_TRUE(happened(joined(
        {idle(2), text_lines(2, 2), {say("Error: RingBuffer_NewValueAvailable() (fd: 2)\n")}})));
    EXPECT_FALSE(is_closed());
}
