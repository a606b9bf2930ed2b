// Goal: a counted read-out asks, waits and fetches in the one order that the co-processor expects,
// and counts what it receives by the lengths of its blocks.
#include "tests/readout/block_fixture.hpp"

#include <climits>

namespace
{

class BlockReadout : public BlockDialogue
{
  protected:
    template <typename T>
    static const T &row(const T &base, const T &omega, const T &temp)
    {
        switch (GetParam().kind) {
        case RecordKind::base:
            return base;
        case RecordKind::omega:
            return omega;
        case RecordKind::temp:
            break;
        }
        return temp;
    }
};

struct Count {
    int wanted;
    Bytes requests;
};

const std::vector<Count> BASE_COUNTS = {
    {0, {0}},
    {1, {1}},
    {2, {2}},
    {72, {72}},
    {73, {73}},
    {74, {73, 1}},
    {146, {73, 73}},
    {147, {73, 73, 1}},
    {200, {73, 73, 54}},
    {256, {73, 73, 73, 37}},
    {-1, {255}},
    {-183, {73}},
    {-200, {56}},
    {-256, {0}},
    {INT_MIN, {0}},
    {INT_MIN + 1, {1}},
};

const std::vector<Count> OMEGA_COUNTS = {
    {0, {0}},
    {1, {1}},
    {2, {2}},
    {77, {77}},
    {78, {78}},
    {79, {78, 1}},
    {156, {78, 78}},
    {157, {78, 78, 1}},
    {200, {78, 78, 44}},
    {256, {78, 78, 78, 22}},
    {-1, {255}},
    {-178, {78}},
    {-200, {56}},
    {-256, {0}},
    {INT_MIN, {0}},
    {INT_MIN + 1, {1}},
};

const std::vector<Count> TEMP_COUNTS = {
    {0, {0}},
    {1, {1}},
    {2, {2}},
    {84, {84}},
    {85, {85}},
    {86, {85, 1}},
    {170, {85, 85}},
    {171, {85, 85, 1}},
    {200, {85, 85, 30}},
    {256, {85, 85, 85, 1}},
    {-1, {255}},
    {-171, {85}},
    {-200, {56}},
    {-256, {0}},
    {INT_MIN, {0}},
    {INT_MIN + 1, {1}},
};

struct Length {
    size_t length;
    uint8_t next_request; // after a first one for 70
};

const std::vector<Length> BASE_LENGTHS = {{0, 70},   {1, 70},   {55, 70},  {56, 69},  {100, 69},
                                          {111, 69}, {112, 68}, {168, 67}, {3864, 1}, {3919, 1}};

const std::vector<Length> OMEGA_LENGTHS = {{0, 70},   {1, 70},   {51, 70},  {52, 69},  {100, 69},
                                           {103, 69}, {104, 68}, {156, 67}, {3588, 1}, {3639, 1}};

const std::vector<Length> TEMP_LENGTHS = {{0, 70},  {1, 70},   {47, 70},  {48, 69},  {95, 69},
                                          {96, 68}, {100, 68}, {144, 67}, {3312, 1}, {3359, 1}};

} // namespace

INSTANTIATE_FOR_ALL_OPERATIONS(BlockReadout);

TEST_P(BlockReadout, asks_for_what_is_still_wanted_or_for_the_most_of_a_request)
{
    for (const Count &count : row(BASE_COUNTS, OMEGA_COUNTS, TEMP_COUNTS)) {
        begin_again();
        const Transcript expected = serve(count.requests);
        read(count.wanted, SILENT);
        EXPECT_TRUE(happened(joined({expected, CLOSING}))) << count.wanted;
    }
}

TEST_P(BlockReadout, of_the_greatest_count_goes_on_and_on)
{
    const uint8_t most = row<uint8_t>(73, 78, 85);
    const Transcript expected = serve({most, most, most, most, most});
    type_line(6, "s\n");
    read(INT_MAX, SILENT);
    EXPECT_TRUE(happened(joined({expected, {request(most)}, POLL})));
}

// What was wanted less what came does not wrap around to a count above 0.
TEST_P(BlockReadout, of_the_least_count_ends_after_a_full_block)
{
    const Bytes full = records(GetParam().kind, row(73, 78, 85));
    pass_request();
    ready_with(full);
    read(INT_MIN, SILENT);
    EXPECT_TRUE(happened(joined({{request(0)}, block(full.size()), CLOSING})));
}

TEST_P(BlockReadout, counts_a_block_by_the_whole_records_in_its_length)
{
    for (const Length &length : row(BASE_LENGTHS, OMEGA_LENGTHS, TEMP_LENGTHS)) {
        begin_again();
        Bytes bytes = records(GetParam().kind, static_cast<int>(length.length / GetParam().size));
        bytes.resize(length.length);
        const bool holds_none = length.length < GetParam().size;
        pass_request();
        ready_with(bytes);
        type_line(2, "s\n");
        read(70, SILENT);
        EXPECT_TRUE(happened(joined({{request(70)},
                                     block(length.length),
                                     {request(length.next_request)},
                                     holds_none ? Transcript{wrong_checksum(0)} : Transcript{},
                                     POLL})))
            << length.length;
    }
}

TEST_P(BlockReadout, of_one_record_asks_again_after_a_block_of_none)
{
    const Bytes one = golden(0).bytes;
    pass_request();
    ready_with({});
    pass_request();
    ready_with(one);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)},
                                 {"exchange 1: 44", "poll", "exchange 2: 00 00", "exchange 0:"},
                                 {request(1)},
                                 {wrong_checksum(0)},
                                 block(one.size()),
                                 {say(golden(0).text, 1)},
                                 CLOSING})));
}

TEST_P(BlockReadout, shows_more_records_than_were_wanted)
{
    const Bytes three = chained({golden(0).bytes, golden(1).bytes, golden(2).bytes});
    pass_request();
    ready_with(three);
    read(1, TEXT);
    EXPECT_TRUE(
        happened(joined({{request(1)},
                         block(three.size()),
                         {say(golden(0).text, 1), say(golden(1).text, 1), say(golden(2).text, 1)},
                         CLOSING})));
}

TEST_P(BlockReadout, asks_for_the_next_block_before_it_shows_this_one)
{
    const Bytes two = chained({golden(0).bytes, golden(1).bytes});
    pass_request();
    ready_with(two);
    pass_request();
    ready_with(golden(2).bytes);
    read(3, TEXT);
    EXPECT_TRUE(happened(joined({{request(3)},
                                 block(two.size()),
                                 {request(1)},
                                 {say(golden(0).text, 1), say(golden(1).text, 1)},
                                 block(GetParam().size),
                                 {say(golden(2).text, 1)},
                                 CLOSING})));
}

TEST_P(BlockReadout, asks_for_the_next_block_before_it_tells_of_a_wrong_checksum)
{
    pass_request();
    ready_with(spoiled(golden(0).bytes, 20));
    pass_request();
    ready_with(golden(1).bytes);
    read(2, TEXT);
    EXPECT_TRUE(happened(joined({{request(2)},
                                 block(GetParam().size),
                                 {request(1)},
                                 {wrong_checksum(0)},
                                 block(GetParam().size),
                                 {say(golden(1).text, 1)},
                                 CLOSING})));
}

TEST_P(BlockReadout, polls_as_often_as_it_takes_without_a_pause)
{
    pass_request();
    busy(4);
    ready_with(golden(0).bytes);
    read(1, SILENT);
    EXPECT_TRUE(happened(joined({{request(1)}, times(4, POLL), block(GetParam().size), CLOSING})));
    EXPECT_EQ(slept_us, 0U);
}

TEST_P(BlockReadout, no_answer_but_0x55_announces_a_block)
{
    for (int status = 0; status < 256; ++status) {
        begin_again();
        pass_request();
        deliver({static_cast<uint8_t>(status)});
        ready_with(golden(0).bytes);
        type_line(2, "s\n");
        read(1, SILENT);
        EXPECT_EQ(happened(joined({{request(1)}, POLL, POLL})), status != 0x55) << status;
    }
}

TEST_P(BlockReadout, request_keeps_what_an_earlier_frame_left_behind)
{
    serve({1});
    read(1, SILENT);
    const Bytes expected = {
        GetParam().command, 0x01, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xAA, 0xB8, 0xB9, 0xBA, 0xBB, 0xBC};
    EXPECT_EQ(bytes_in(stm_link.tx_short), expected);
}

TEST_P(BlockReadout, what_comes_back_during_a_request_is_of_no_account)
{
    serve({1});
    read(1, SILENT);
    EXPECT_EQ(bytes_in(stm_link.rx_short), chained({bytes_of(8, 0x55), {0xD8, 0xD9}}));
    EXPECT_EQ(stm_link.message, std::string("the last report"));
}

TEST_P(BlockReadout, leaves_filler_and_what_came_back_with_the_closing_synchronisation)
{
    serve({1});
    deliver(bytes_of(4096, 0x77));
    read(1, SILENT);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), bytes_of(4096, 0x77));
}

TEST_P(BlockReadout, exchanges_that_return_0_have_not_failed)
{
    exchange_result = 0;
    const uint8_t most = GetParam().most;
    const Transcript expected = serve({most, 1});
    read(most + 1, SILENT);
    EXPECT_TRUE(happened(joined({expected, CLOSING})));
}

TEST_P(BlockReadout, result_of_the_output_is_of_no_account)
{
    output_result = -1;
    pass_request();
    ready_with(chained({golden(0).bytes, golden(1).bytes}));
    read(2, TEXT);
    EXPECT_TRUE(same(texts, Transcript({say(golden(0).text, 1), say(golden(1).text, 1)})));
}

TEST_P(BlockReadout, two_in_a_row_know_nothing_of_each_other)
{
    const Transcript first = serve({2});
    pass_request(); // the closing synchronisation
    const Transcript second = serve({1});
    read(2, SILENT);
    read(1, SILENT);
    EXPECT_TRUE(happened(joined({first, CLOSING, second, CLOSING})));
}
