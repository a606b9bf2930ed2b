// Goal: the virtual co-processor hands its measurements over as they are asked for: blocks of
// records, frames of converter values and raw bytes, each in the exchange that fetches it.
#include "tests/simulator/readout_wire.hpp"

namespace simulator
{

namespace
{

class Readout : public ReadoutWire
{
};

TEST_F(Readout, of_records_is_ready_at_once_and_gives_length_and_block)
{
    EXPECT_EQ(exchange({0xC8, 3, 9, 8, 7, 6, 5, 0xAA}), Bytes(8, 0));
    EXPECT_EQ(note(), "3 records asked for");
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(note(), "ready");
    EXPECT_EQ(exchange({0, 0}), (Bytes{0, 168}));
    EXPECT_EQ(note(), "length of block 1: 3 records");
    const Bytes block = fetch(168);
    EXPECT_EQ(note(), "block 1: 3 records");
    ASSERT_EQ(records_of(block, BASE).size(), 3U);
    for (size_t i = 0; i < 3; ++i) {
        const Bytes record = records_of(block, BASE)[i];
        EXPECT_EQ(record[0], 0x55);
        EXPECT_EQ(record[1], i + 1);
        EXPECT_EQ(number_at(record, 4, 4), i + 1);
        EXPECT_EQ(record[53], 0) << "nothing is buffered";
        EXPECT_TRUE(is_intact(record));
    }
}

TEST_F(Readout, says_one_record_of_one)
{
    read_block(OMEGA, 1);
    EXPECT_EQ(note(), "block 1: 1 record");
}

TEST_F(Readout, gives_as_many_records_as_fit_into_a_block_of_their_kind)
{
    for (const RecordKind &kind : KINDS) {
        for (const int count : {0, 1, 2, kind.most - 1, kind.most, kind.most + 1, 255}) {
            power_on({}, {});
            size_t announced = 0;
            const Bytes block = read_block(kind, count, announced);
            const auto given = static_cast<size_t>(std::min(count, kind.most));
            EXPECT_EQ(announced, given * kind.size);
            const std::vector<Bytes> records = records_of(block, kind);
            ASSERT_EQ(records.size(), given);
            EXPECT_TRUE(std::ranges::all_of(records, is_intact));
        }
    }
}

TEST_F(Readout, sends_the_higher_byte_of_a_blocks_length_first)
{
    for (const auto &[kind, length] : {std::pair(BASE, Bytes{0x0F, 0xF8}),
                                       {OMEGA, Bytes{0x0F, 0xD8}},
                                       {TEMPERATURE, Bytes{0x0F, 0xF0}}}) {
        send(frame(kind.code, kind.most));
        EXPECT_EQ(poll_data(), 0x55);
        EXPECT_EQ(exchange({0, 0}), length);
    }
}

TEST_F(Readout, of_no_records_gives_an_empty_block)
{
    send(frame(0x02, 0));
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(exchange({0, 0}), (Bytes{0, 0}));
    EXPECT_EQ(note(), "length of block 1: 0 records");
    send(Bytes(9, 0x66));
    EXPECT_EQ(note(), "synchronised");
}

TEST_F(Readout, counts_time_over_blocks_and_kinds_and_anew_with_the_power)
{
    uint32_t time = 0;
    for (int round = 0; round < 2; ++round) {
        for (const RecordKind &kind : KINDS) {
            for (const Bytes &record : records_of(read_block(kind, 70), kind)) {
                EXPECT_EQ(number_at(record, 4, 4), ++time);
                EXPECT_EQ(record[1], (time - 1) % 255 + 1);
            }
        }
    }
    EXPECT_EQ(time, 420U);
    power_on({}, {});
    EXPECT_EQ(number_at(read_block(OMEGA, 1), 4, 4), 1U);
}

TEST_F(Readout, measures_by_its_seed)
{
    const Bytes first = read_block(BASE, 9);
    power_on({}, {0, {}, 1});
    EXPECT_EQ(read_block(BASE, 9), first);
    power_on({}, {0, {}, 2});
    EXPECT_NE(read_block(BASE, 9), first);
}

TEST_F(Readout, finds_the_board_busy_for_as_many_polls_as_it_is_told)
{
    power_on({}, {2, {}});
    for (const uint8_t code : Bytes{0xC8, 0xC1, 0x02, 0xC4, 0x01}) {
        send(frame(code, 1));
        EXPECT_EQ(poll_data(), 0);
        EXPECT_EQ(note(), "busy");
        EXPECT_EQ(poll_data(), 0);
        EXPECT_EQ(poll_data(), 0x55);
        EXPECT_EQ(poll_data(), 0) << "it says so once";
        EXPECT_EQ(note(), "nothing to answer");
    }
}

TEST_F(Readout, gives_no_block_before_it_is_ready_nor_before_its_length)
{
    send(frame(0xC8, 1));
    EXPECT_EQ(exchange({0, 0}), (Bytes{0, 0}));
    EXPECT_EQ(note(), "not understood");
    EXPECT_EQ(poll_data(), 0);
    send(frame(0xC8, 1));
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(fetch(56), Bytes(56, 0));
    EXPECT_EQ(note(), "synchronised");
}

TEST_F(Readout, gives_a_block_once_and_to_exactly_as_many_fillers)
{
    for (const Bytes &wrong : {Bytes(55, 0x66), Bytes(57, 0x66), Bytes(56, 0)}) {
        send(frame(0xC8, 1));
        EXPECT_EQ(poll_data(), 0x55);
        EXPECT_EQ(fetch_big_endian_length(), 56U);
        EXPECT_EQ(exchange(wrong), Bytes(wrong.size(), 0));
        EXPECT_EQ(fetch(56), Bytes(56, 0));
    }
    EXPECT_EQ(read_block(BASE, 1)[0], 0x55);
    EXPECT_EQ(fetch(56), Bytes(56, 0));
}

TEST_F(Readout, takes_a_new_request_for_the_one_before)
{
    send(frame(0xC8, 5));
    EXPECT_EQ(number_at(read_block(TEMPERATURE, 1), 4, 4), 1U) << "nobody waited for the five";
    send(frame(0xC8, 5));
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(number_at(read_block(TEMPERATURE, 1), 4, 4), 7U) << "the five were ready";
    send(frame(0xC8, 5));
    send({0x91});
    EXPECT_EQ(poll_data(), 5);
    EXPECT_EQ(poll_data(), 0);
}

TEST_F(Readout, is_the_applications)
{
    power_on({Mode::boot_loader, 5}, {});
    for (const uint8_t code : Bytes{0xC8, 0xC1, 0x02, 0xC4, 0x01}) {
        send(frame(code, 1));
        EXPECT_TRUE(note().ends_with("is for the application, which is not running")) << note();
        EXPECT_EQ(poll_data(), 0);
    }
    Bytes wrong_end = frame(0xC8, 1);
    wrong_end[7] = 0xAB;
    power_on({}, {});
    send(wrong_end);
    EXPECT_EQ(poll_data(), 0);
}

TEST_F(Readout, of_converter_values_sends_the_lower_byte_of_the_length_first)
{
    send({0xC4, 1, 2, 3, 4, 5, 6, 0xAA});
    EXPECT_EQ(note(), "values asked for");
    EXPECT_EQ(poll_data(), 0x55);
    EXPECT_EQ(exchange({0, 0}), (Bytes{0xB3, 0x04}));
    EXPECT_EQ(note(), "length of the values");
    const Bytes frame = fetch(1203);
    EXPECT_EQ(note(), "200 values");
    EXPECT_EQ(frame[0], 200);
    EXPECT_TRUE(is_intact(frame));
    int32_t highest = 0;
    for (size_t at = 1; at < 1201; at += 4) {
        highest = std::max(highest, signed_at(frame, at));
        EXPECT_LE(std::abs(signed_at(frame, at)), 6'002'000);
    }
    EXPECT_NEAR(highest, 6'000'000, 6'000);
    EXPECT_NEAR(signed_at(frame, 1), 0, 2000);
    EXPECT_NEAR(signed_at(frame, 1 + 4 * 299), signed_at(frame, 1 + 4 * 254), 4000);
}

TEST_F(Readout, of_converter_values_has_as_many_good_ones_as_it_is_told)
{
    for (const int count : {0, 1, 255}) {
        power_on({}, {0, {}, 1, count});
        send(frame(0xC4));
        EXPECT_EQ(wait(), 1);
        send({0, 0});
        const Bytes frame = fetch(1203);
        EXPECT_EQ(frame[0], count);
        EXPECT_TRUE(is_intact(frame));
        EXPECT_NEAR(signed_at(frame, 1 + 4 * 11), 5'996'400, 5'000) << "all places are filled";
    }
}

TEST_F(Readout, of_converter_values_goes_on_where_the_last_one_ended)
{
    int32_t last = 0;
    for (int i = 0; i < 3; ++i) {
        send(frame(0xC4));
        EXPECT_EQ(wait(), 1);
        send({0, 0});
        const Bytes frame = fetch(1203);
        if (i > 0) {
            EXPECT_NEAR(signed_at(frame, 1), last, 900'000);
            EXPECT_NE(signed_at(frame, 1), last);
        }
        last = signed_at(frame, 1 + 4 * 299);
    }
}

TEST_F(Readout, of_raw_bytes_gives_them_without_a_length)
{
    send({0x01, 0, 0, 0, 0, 0, 0, 0xAA});
    EXPECT_EQ(note(), "raw bytes asked for");
    EXPECT_EQ(poll_data(), 0x55);
    const Bytes raw = fetch(50);
    EXPECT_EQ(note(), "raw bytes");
    ASSERT_EQ(raw.size(), 50U);
    EXPECT_EQ(raw[0], 0x55);
    for (size_t i = 1; i < 50; ++i) {
        EXPECT_EQ(raw[i], i);
    }
    EXPECT_EQ(fetch(50), Bytes(50, 0));
    power_on({}, {0, {}, 250});
    send(frame(0x01));
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(number_at(fetch(50), 5, 4), 0x0100FFFEU) << "they begin with the seed";
}

TEST_F(Readout, of_raw_bytes_takes_exactly_fifty_fillers)
{
    for (const Bytes &wrong : {Bytes(49, 0x66), Bytes(51, 0x66), Bytes{0, 0}}) {
        send(frame(0x01));
        EXPECT_EQ(poll_data(), 0x55);
        EXPECT_EQ(exchange(wrong), Bytes(wrong.size(), 0));
        EXPECT_EQ(fetch(50), Bytes(50, 0));
    }
}

} // namespace

} // namespace simulator
