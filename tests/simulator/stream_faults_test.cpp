// Goal: what can go wrong in a stream goes wrong where it is told to, wherever headers are.
#include "tests/simulator/stream_wire.hpp"

namespace simulator
{

namespace
{

class StreamFaults : public StreamWire
{
  protected:
    // A stream of base records in which so many wait already.
    void stream_with(const Faults &faults, int records, int index = 0)
    {
        power_on({}, {0, faults, 1, 200, 1000, index});
        begin_stream(BASE);
        pass(milliseconds(records));
    }
};

TEST_F(StreamFaults, a_length_below_what_the_poll_holds_leaves_nothing_to_fetch)
{
    stream_with({}, 1);
    const Bytes record = read_stream(BASE);
    for (const int length : {0, 1, 16, 17}) {
        stream_with({{FaultKind::block_length, 1, length}}, 1);
        Bytes expected = {0x55, 0, static_cast<uint8_t>(length)};
        expected.insert(expected.end(), record.begin(), record.begin() + 17);
        EXPECT_EQ(poll_stream(), expected) << "the poll shows the record all the same";
        send(Bytes(9, 0x66));
        EXPECT_EQ(note(), "synchronised");
    }
    stream_with({{FaultKind::block_length, 1, 18}}, 1);
    EXPECT_EQ(poll_stream()[2], 18);
    EXPECT_EQ(fetch(1), Bytes{record[17]});
    EXPECT_EQ(note(), "block 1: 1 record");
}

TEST_F(StreamFaults, a_length_of_0_is_announced_wherever_the_header_is)
{
    for (int index = 0; index < 20; ++index) {
        stream_with({{FaultKind::block_length, 1, 0}}, 3, index);
        size_t announced = 99;
        EXPECT_EQ(fetch_behind(poll_stream(), announced), Bytes());
        EXPECT_EQ(announced, 0U);
        EXPECT_EQ(fetch(100), Bytes(100, 0));
        pass(milliseconds(1));
        begin_stream(BASE); // that was no fetch, but a synchronisation
        pass(milliseconds(1));
        EXPECT_EQ(times_of(read_stream(BASE), BASE).size(), 1U);
    }
}

TEST_F(StreamFaults, a_length_beyond_all_buffers_gives_4096_bytes)
{
    for (const int length : {4096, 4097, 65535}) {
        for (const int index : {0, 9, 17, 18, 19}) {
            stream_with({{FaultKind::block_length, 1, length}}, 2, index);
            size_t announced = 0;
            const Bytes block = fetch_behind(poll_stream(), announced);
            EXPECT_EQ(note(), "block 1: 2 records");
            EXPECT_EQ(announced, static_cast<size_t>(length));
            ASSERT_EQ(block.size(), 4096U);
            EXPECT_EQ(times_of(Bytes(block.begin(), block.begin() + 112), BASE), run_from(1, 2));
            EXPECT_EQ(Bytes(block.begin() + 112, block.end()), Bytes(3984, 0));
        }
    }
}

TEST_F(StreamFaults, a_block_can_be_short_or_padded)
{
    for (const int index : {0, 17, 18, 19}) {
        stream_with({{FaultKind::short_block, 1, 57}, {FaultKind::padded, 2, 0}}, 2, index);
        EXPECT_EQ(read_stream(BASE).size(), 55U);
        pass(milliseconds(1));
        const Bytes padded = read_stream(BASE);
        EXPECT_EQ(times_of(Bytes(padded.begin(), padded.begin() + 56), BASE), run_from(3, 1));
        EXPECT_EQ(Bytes(padded.begin() + 56, padded.end()), Bytes(4040, 0x55));
    }
    stream_with({{FaultKind::short_block, 1, 4096}}, 2);
    EXPECT_EQ(poll_stream(),
              (Bytes{0x55, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(StreamFaults, records_can_be_damaged_unnumbered_and_stuck)
{
    stream_with({}, 5);
    const std::vector<Bytes> whole = records_of(read_stream(BASE), BASE);
    stream_with(
        {{FaultKind::flip, 2, 400}, {FaultKind::unnumbered, 3, 0}, {FaultKind::stuck, 5, 0}}, 5);
    const std::vector<Bytes> records = records_of(read_stream(BASE), BASE);
    EXPECT_EQ(records[0], whole[0]);
    EXPECT_FALSE(is_intact(records[1]));
    EXPECT_EQ(records[1][50], whole[1][50] ^ 1);
    EXPECT_EQ(records[2][1], 0);
    EXPECT_EQ(number_at(records[2], 4, 4), 3U);
    EXPECT_TRUE(is_intact(records[2]));
    EXPECT_EQ(records[3], whole[3]);
    EXPECT_EQ(number_at(records[4], 4, 4), 4U);
    EXPECT_EQ(buffered_of(records[4]), 0);
    EXPECT_EQ(Bytes(records[4].begin(), records[4].begin() + 53),
              Bytes(whole[3].begin(), whole[3].begin() + 53));
    EXPECT_TRUE(is_intact(records[4]));
}

TEST_F(StreamFaults, the_first_record_cannot_be_stuck)
{
    stream_with({{FaultKind::stuck, 1, 0}}, 2);
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(1, 2));
}

TEST_F(StreamFaults, a_record_that_the_full_buffer_has_lost_has_none)
{
    stream_with({{FaultKind::flip, 256, 0}}, 256);
    size_t intact = 0;
    for (int i = 0; i < 4; ++i) {
        intact += times_of(read_stream(BASE), BASE).size();
    }
    EXPECT_EQ(intact, 255U);
}

TEST_F(StreamFaults, a_late_block_is_found_so_many_polls_later)
{
    for (const RecordKind &kind : KINDS) {
        power_on_with({{FaultKind::late, command_place(kind.code), 299}});
        begin_stream(kind);
        pass(milliseconds(1));
        for (int poll = 2; poll < 300; ++poll) {
            EXPECT_EQ(poll_stream(), Bytes(20, 0));
        }
        EXPECT_EQ(poll_stream()[0], 0x55);
    }
}

TEST_F(StreamFaults, a_deaf_board_begins_to_measure_with_the_first_poll_it_hears)
{
    power_on_with({{FaultKind::deaf, command_place(0xC8), 2}});
    request(BASE);
    for (int poll = 1; poll <= 602; ++poll) {
        EXPECT_EQ(poll_stream(), Bytes(20, 0));
        EXPECT_EQ(note(), "fault: deaf");
        pass(milliseconds(1));
    }
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(note(), "no record yet");
    pass(milliseconds(2));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(1, 2));
}

TEST_F(StreamFaults, a_deaf_board_counts_polls_of_both_kinds)
{
    power_on_with({{FaultKind::deaf, command_place(0xC8), 1}});
    request(BASE);
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(wait(), 301) << "what was not heard has not decided between stream and count";
}

TEST_F(StreamFaults, silence_begins_with_the_request_of_a_stream)
{
    power_on_with({{FaultKind::silence, command_place(0x02), 0}});
    begin_stream(BASE);
    pass(milliseconds(1));
    EXPECT_EQ(read_stream(BASE).size(), 56U);
    request(TEMPERATURE);
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(note(), "");
    power_on_with({{FaultKind::bus_inactive, command_place(0x02), 0}});
    request(TEMPERATURE);
    EXPECT_EQ(poll_stream(), Bytes(20, 0xFF));
}

} // namespace

} // namespace simulator
