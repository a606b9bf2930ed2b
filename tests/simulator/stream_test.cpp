// Goal: polled with twenty bytes, the virtual co-processor hands over what it has measured by
// itself, at its own rate, with the header of each block where it is told to be.
#include "tests/simulator/stream_wire.hpp"

namespace simulator
{

namespace
{

class Stream : public StreamWire
{
};

TEST_F(Stream, has_no_record_until_the_time_of_the_first_is_over)
{
    request(TEMPERATURE);
    EXPECT_EQ(note(), "85 records asked for");
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(note(), "no record yet");
    pass(nanoseconds(999'999));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    pass(nanoseconds(1));
    const Bytes found = poll_stream();
    EXPECT_EQ(note(), "header of block 1: 1 record");
    EXPECT_EQ(Bytes(found.begin(), found.begin() + 5), (Bytes{0x55, 0, 48, 0x55, 1}));
    const Bytes rest = fetch(31);
    EXPECT_EQ(note(), "block 1: 1 record");
    Bytes record(found.begin() + 3, found.end());
    append(record, rest);
    EXPECT_TRUE(is_intact(record));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(note(), "nothing to answer");
}

TEST_F(Stream, gives_blocks_of_all_sizes_at_all_places_of_the_header)
{
    for (const RecordKind &kind : KINDS) {
        for (int index = 0; index < 20; ++index) {
            for (int count = 1; count <= kind.most; ++count) {
                power_on({}, {0, {}, 1, 200, 1000, index});
                begin_stream(kind);
                pass(milliseconds(count));
                const Bytes found = poll_stream();
                EXPECT_EQ(std::ranges::find(found, 0x55) - found.begin(), index);
                EXPECT_EQ(Bytes(found.begin(), found.begin() + index),
                          Bytes(static_cast<size_t>(index), 0));
                size_t announced = 0;
                const Bytes block = fetch_behind(found, announced);
                EXPECT_EQ(announced, static_cast<size_t>(count) * kind.size);
                EXPECT_EQ(times_of(block, kind), run_from(1, static_cast<size_t>(count)));
            }
        }
    }
}

TEST_F(Stream, gives_a_header_at_the_last_places_in_the_exchanges_behind_it)
{
    power_on({}, {0, {}, 1, 200, 1000, 19});
    begin_stream(OMEGA);
    pass(milliseconds(70));
    Bytes expected(20, 0);
    expected[19] = 0x55;
    EXPECT_EQ(poll_stream(), expected);
    EXPECT_EQ(exchange({0, 0}), (Bytes{0x0E, 0x38}));
    EXPECT_EQ(note(), "length of block 1: 70 records");
    EXPECT_EQ(times_of(fetch(3640), OMEGA), run_from(1, 70));
    power_on({}, {0, {}, 1, 200, 1000, 18});
    begin_stream(OMEGA);
    pass(milliseconds(70));
    expected[18] = 0x55;
    expected[19] = 0x0E;
    EXPECT_EQ(poll_stream(), expected);
    EXPECT_EQ(exchange({0}), Bytes{0x38});
    EXPECT_EQ(note(), "length of block 1: 70 records");
    EXPECT_EQ(times_of(fetch(3640), OMEGA), run_from(1, 70));
}

TEST_F(Stream, gives_what_is_left_to_the_very_exchange_that_asks_for_it)
{
    for (const auto &[index, wrong] : {std::pair(19, Bytes{0}),
                                       {19, Bytes{0, 0, 0}},
                                       {19, Bytes{0, 1}},
                                       {18, Bytes{0, 0}},
                                       {18, Bytes{0x66}},
                                       {17, Bytes(47, 0x66)},
                                       {17, Bytes(49, 0x66)},
                                       {17, Bytes(48, 0)},
                                       {0, Bytes(48, 0x66)}}) {
        power_on({}, {0, {}, 1, 200, 1000, index});
        begin_stream(TEMPERATURE);
        pass(milliseconds(1));
        EXPECT_EQ(poll_stream()[static_cast<size_t>(index)], 0x55);
        EXPECT_EQ(exchange(wrong), Bytes(wrong.size(), 0));
        EXPECT_EQ(exchange({0, 0}), (Bytes{0, 0})) << "it is over";
        EXPECT_EQ(fetch(31), Bytes(31, 0));
        EXPECT_EQ(fetch(48), Bytes(48, 0));
    }
}

TEST_F(Stream, gives_the_rest_of_a_block_once)
{
    begin_stream(BASE);
    pass(milliseconds(1));
    EXPECT_EQ(read_stream(BASE).size(), 56U);
    EXPECT_EQ(fetch(39), Bytes(39, 0));
}

TEST_F(Stream, can_have_its_header_at_another_place_each_time)
{
    power_on({}, {0, {}, 3, 200, 1000, ANY_HEADER_INDEX});
    begin_stream(BASE);
    std::vector<int> places;
    for (uint32_t i = 1; i <= 40; ++i) {
        pass(milliseconds(1));
        request(BASE);
        const Bytes found = poll_stream();
        places.push_back(static_cast<int>(std::ranges::find(found, 0x55) - found.begin()));
        size_t announced = 0;
        EXPECT_EQ(times_of(fetch_behind(found, announced), BASE), run_from(i, 1));
    }
    EXPECT_EQ(std::vector<int>(places.begin(), places.begin() + 4),
              (std::vector<int>{3, 10, 17, 4}));
    EXPECT_EQ(std::vector<int>(places.begin() + 20, places.end()),
              std::vector<int>(places.begin(), places.begin() + 20));
    places.resize(20);
    std::ranges::sort(places);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(places[static_cast<size_t>(i)], i);
    }
}

TEST_F(Stream, gives_at_most_a_full_block_and_says_how_much_waits_behind_each_record)
{
    for (const RecordKind &kind : KINDS) {
        power_on({}, {});
        begin_stream(kind);
        pass(milliseconds(100));
        const auto full = static_cast<size_t>(kind.most);
        std::vector<Bytes> records = records_of(read_stream(kind), kind);
        EXPECT_EQ(records.size(), full);
        for (const Bytes &record : records_of(read_stream(kind), kind)) {
            records.push_back(record);
        }
        ASSERT_EQ(records.size(), 100U);
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(buffered_of(records[static_cast<size_t>(i)]), 99 - i);
        }
    }
}

TEST_F(Stream, gives_nothing_without_a_request)
{
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(note(), "nothing to answer");
    begin_stream(BASE);
    send({0x91});
    pass(milliseconds(2));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(poll_data(), 5) << "nor is the answer to another command disturbed";
    power_on({Mode::boot_loader, 5}, {});
    request(BASE);
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(note(), "nothing to answer");
}

TEST_F(Stream, is_polled_with_twenty_times_the_same_byte_only)
{
    for (const Bytes &wrong : {Bytes(19, 0x44), Bytes(21, 0x44), Bytes(20, 0x33)}) {
        power_on({}, {});
        begin_stream(BASE);
        pass(milliseconds(1));
        EXPECT_EQ(exchange(wrong), Bytes(wrong.size(), 0));
        EXPECT_EQ(note(), "not understood");
    }
}

TEST_F(Stream, is_what_polls_of_twenty_bytes_make_of_a_request)
{
    for (const RecordKind &kind : KINDS) {
        power_on({}, {});
        EXPECT_EQ(read_block(kind, kind.most).size(), static_cast<size_t>(kind.most) * kind.size)
            << "polled with one byte, the same frame asks for that many";
        request(kind);
        EXPECT_EQ(poll_stream(), Bytes(20, 0));
        EXPECT_EQ(poll_data(), 0);
        EXPECT_EQ(note(), "nothing to answer");
        pass(milliseconds(1));
        EXPECT_EQ(poll_stream()[0], 0x55) << "the first poll has decided";
        request(kind);
        EXPECT_EQ(poll_data(), 0x55);
        EXPECT_EQ(poll_stream(), Bytes(20, 0));
        EXPECT_EQ(fetch_big_endian_length(), static_cast<size_t>(kind.most) * kind.size);
    }
}

TEST_F(Stream, gives_no_more_records_than_are_asked_for)
{
    begin_stream(BASE);
    pass(milliseconds(9));
    send(frame(0xC8, 4));
    size_t announced = 0;
    EXPECT_EQ(times_of(fetch_behind(poll_stream(), announced), BASE), run_from(1, 4));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(5, 5));
}

TEST_F(Stream, finds_the_board_busy_after_each_request)
{
    power_on({}, {2, {}});
    begin_stream(BASE);
    EXPECT_EQ(note(), "busy");
    pass(milliseconds(1));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(note(), "busy");
    EXPECT_EQ(poll_stream()[0], 0x55);
    request(BASE);
    pass(milliseconds(1));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    EXPECT_EQ(poll_stream()[0], 0x55);
}

} // namespace

} // namespace simulator
