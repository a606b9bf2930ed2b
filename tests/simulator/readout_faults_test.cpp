// Goal: what can go wrong in a read-out goes wrong where it is told to, and nowhere else.
#include "tests/simulator/readout_wire.hpp"

namespace simulator
{

namespace
{

class ReadoutFaults : public ReadoutWire
{
  protected:
    // The numbers in a run of records of those that are damaged.
    static std::vector<int> damaged(const std::vector<Bytes> &records)
    {
        std::vector<int> numbers;
        for (size_t i = 0; i < records.size(); ++i) {
            if (!is_intact(records[i])) {
                numbers.push_back(static_cast<int>(i) + 1);
            }
        }
        return numbers;
    }
};

TEST_F(ReadoutFaults, a_flipped_bit_damages_one_record_of_the_run)
{
    for (const RecordKind &kind : KINDS) {
        power_on({}, {});
        const Bytes whole[] = {read_block(kind, 5), read_block(kind, 5)};
        power_on_with({{FaultKind::flip, 7, 13}});
        EXPECT_EQ(read_block(kind, 5), whole[0]);
        Bytes second = read_block(kind, 5);
        EXPECT_EQ(damaged(records_of(second, kind)), std::vector<int>{2});
        second[kind.size + 1] ^= 0x20;
        EXPECT_EQ(second, whole[1]);
    }
}

TEST_F(ReadoutFaults, any_bit_of_a_record_can_be_flipped)
{
    for (const RecordKind &kind : KINDS) {
        power_on({}, {});
        const Bytes whole = read_block(kind, 1);
        for (size_t bit = 0; bit < 8 * kind.size; ++bit) {
            power_on_with({{FaultKind::flip, 1, static_cast<int>(bit)}});
            Bytes record = read_block(kind, 1);
            EXPECT_FALSE(is_intact(record));
            record[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
            EXPECT_EQ(record, whole);
        }
    }
    power_on_with({{FaultKind::flip, 1, 48 * 8}});
    EXPECT_TRUE(is_intact(read_block(TEMPERATURE, 1))) << "a bit beyond the record";
}

TEST_F(ReadoutFaults, several_records_can_be_damaged)
{
    power_on_with(
        {{FaultKind::flip, 1, 64}, {FaultKind::flip, 73, 64}, {FaultKind::flip, 500, 64}});
    EXPECT_EQ(damaged(records_of(read_block(BASE, 73), BASE)), (std::vector<int>{1, 73}));
}

TEST_F(ReadoutFaults, an_unnumbered_record_has_number_0_and_is_intact)
{
    power_on_with({{FaultKind::unnumbered, 2, 0}});
    const std::vector<Bytes> records = records_of(read_block(OMEGA, 3), OMEGA);
    EXPECT_EQ(records[0][1], 1);
    EXPECT_EQ(records[1][1], 0);
    EXPECT_EQ(records[2][1], 3);
    EXPECT_EQ(number_at(records[1], 4, 4), 2U);
    EXPECT_TRUE(is_intact(records[1]));
}

TEST_F(ReadoutFaults, a_short_block_is_announced_as_short_as_it_is)
{
    for (const auto &[lost, rest] :
         {std::pair(1, 167U), {56, 112U}, {167, 1U}, {168, 0U}, {4096, 0U}}) {
        power_on_with({{FaultKind::short_block, 2, lost}});
        const Bytes first = read_block(BASE, 3);
        EXPECT_EQ(first.size(), 168U);
        EXPECT_EQ(read_block(BASE, 3).size(), rest);
        const Bytes third = read_block(BASE, 3);
        EXPECT_EQ(third.size(), 168U);
        EXPECT_EQ(number_at(third, 4, 4), 7U) << "what is cut off is lost";
    }
}

TEST_F(ReadoutFaults, a_shorter_length_than_the_blocks_cuts_it)
{
    power_on({}, {});
    const Bytes whole = read_block(BASE, 3);
    power_on_with({{FaultKind::block_length, 1, 100}});
    EXPECT_EQ(read_block(BASE, 3), Bytes(whole.begin(), whole.begin() + 100));
    power_on_with({{FaultKind::block_length, 1, 0}});
    EXPECT_EQ(read_block(BASE, 3), Bytes());
}

TEST_F(ReadoutFaults, a_larger_length_than_the_blocks_fills_it_with_zeros)
{
    power_on({}, {});
    Bytes expected = read_block(BASE, 3);
    expected.resize(4096);
    power_on_with({{FaultKind::block_length, 1, 4096}});
    EXPECT_EQ(read_block(BASE, 3), expected);
    EXPECT_EQ(note(), "block 1: 3 records");
    power_on_with({{FaultKind::block_length, 1, 56}});
    EXPECT_EQ(read_block(BASE, 0), Bytes(56, 0));
    EXPECT_EQ(note(), "block 1: 0 records");
}

TEST_F(ReadoutFaults, a_length_beyond_all_buffers_gives_4096_bytes)
{
    for (const int length : {4097, 65535}) {
        power_on_with({{FaultKind::block_length, 1, length}});
        send(frame(0xC8, 73));
        EXPECT_EQ(wait(), 1);
        EXPECT_EQ(fetch_big_endian_length(), static_cast<size_t>(length));
        const Bytes block = fetch(4096);
        EXPECT_EQ(damaged(records_of(Bytes(block.begin(), block.begin() + 4088), BASE)),
                  std::vector<int>{});
        EXPECT_EQ(Bytes(block.end() - 8, block.end()), Bytes(8, 0));
    }
}

TEST_F(ReadoutFaults, a_padded_block_is_full_of_what_looks_like_records)
{
    for (const RecordKind &kind : KINDS) {
        power_on({}, {});
        const Bytes whole = read_block(kind, 2);
        power_on_with({{FaultKind::padded, 1, 0}});
        size_t announced = 0;
        const Bytes block = read_block(kind, 2, announced);
        EXPECT_EQ(announced, 4096U);
        Bytes expected = whole;
        expected.resize(4096, 0x55);
        EXPECT_EQ(block, expected);
        EXPECT_EQ(read_block(kind, 2).size(), whole.size());
    }
}

TEST_F(ReadoutFaults, a_block_can_be_cut_padded_and_announced_wrongly_at_once)
{
    power_on({}, {});
    Bytes expected = read_block(BASE, 1);
    expected.resize(50);
    expected.resize(70, 0x55);
    power_on_with({{FaultKind::short_block, 1, 6},
                   {FaultKind::padded, 1, 0},
                   {FaultKind::block_length, 1, 70}});
    EXPECT_EQ(read_block(BASE, 1), expected);
}

TEST_F(ReadoutFaults, blocks_are_counted_over_all_kinds_of_records_and_nothing_else)
{
    power_on_with({{FaultKind::block_length, 3, 7}});
    EXPECT_EQ(read_block(BASE, 1).size(), 56U);
    send(frame(0xC4));
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(read_block(OMEGA, 1).size(), 52U);
    send(frame(0x02, 1)); // replaced before anybody waits for it
    EXPECT_EQ(read_block(TEMPERATURE, 1).size(), 7U);
}

TEST_F(ReadoutFaults, the_length_of_all_blocks_of_a_command_can_be_another)
{
    power_on_with({{FaultKind::length, command_place(0xC1), 60}, {FaultKind::block_length, 3, 61}});
    EXPECT_EQ(read_block(BASE, 1).size(), 56U);
    EXPECT_EQ(read_block(OMEGA, 1).size(), 60U);
    EXPECT_EQ(read_block(OMEGA, 1).size(), 61U);
    power_on_with({{FaultKind::length, ALWAYS, 9}});
    EXPECT_EQ(read_block(BASE, 1).size(), 9U);
}

TEST_F(ReadoutFaults, the_length_of_converter_values_can_be_another_and_raw_bytes_have_none)
{
    power_on_with({{FaultKind::length, ALWAYS, 5000}});
    send(frame(0xC4));
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(exchange({0, 0}), (Bytes{0x88, 0x13}));
    const Bytes values = fetch(4096);
    EXPECT_TRUE(is_intact(Bytes(values.begin(), values.begin() + 1203)));
    EXPECT_EQ(values[1203], 0);
    send(frame(0x01));
    EXPECT_EQ(wait(), 1);
    EXPECT_EQ(fetch(50)[49], 49);
}

TEST_F(ReadoutFaults, a_late_read_out_is_ready_so_many_polls_later)
{
    for (const uint8_t code : Bytes{0xC8, 0xC1, 0x02, 0xC4, 0x01}) {
        for (const int polls : {299, 300}) {
            power_on_with({{FaultKind::late, command_place(code), polls}});
            send(frame(code, 1));
            EXPECT_EQ(wait(), polls + 1);
            send(frame(code, 1));
            EXPECT_EQ(wait(), polls + 1);
        }
    }
}

TEST_F(ReadoutFaults, a_deaf_board_hears_the_first_poll_after_the_waits_it_missed)
{
    for (const uint8_t code : Bytes{0xC8, 0xC1, 0x02, 0xC4, 0x01}) {
        power_on_with({{FaultKind::deaf, command_place(code), 2}});
        send(frame(code, 1));
        EXPECT_EQ(poll_data(), 0);
        EXPECT_EQ(note(), "fault: deaf");
        EXPECT_EQ(wait(), 602);
        send(frame(code, 1));
        EXPECT_EQ(wait(), 1) << "later waits are heard";
    }
}

TEST_F(ReadoutFaults, a_deaf_board_is_busy_when_it_hears_again)
{
    power_on({}, {2, {{FaultKind::deaf, command_place(0xC8), 1}}});
    send(frame(0xC8, 1));
    EXPECT_EQ(wait(), 304);
    EXPECT_EQ(fetch_big_endian_length(), 56U);
}

TEST_F(ReadoutFaults, a_wait_that_is_given_up_is_one_of_those_missed)
{
    power_on_with({{FaultKind::deaf, command_place(0xC8), 2}});
    send(frame(0xC8, 1));
    EXPECT_EQ(poll_data(), 0);
    send(frame(0xC1, 1));
    EXPECT_EQ(wait(), 1) << "another command";
    send(frame(0xC8, 1));
    send(frame(0xC8, 1));
    EXPECT_EQ(wait(), 302) << "a request that nobody waits for is no wait";
}

TEST_F(ReadoutFaults, silence_begins_with_the_read_out_that_it_is_told_for)
{
    for (const uint8_t code : Bytes{0xC8, 0xC1, 0x02, 0xC4, 0x01}) {
        power_on_with({{FaultKind::silence, command_place(code), 0}});
        send(frame(0xA0));
        EXPECT_EQ(wait(), 1);
        send(frame(code, 1));
        EXPECT_EQ(note(), "fault: silent from here on");
        EXPECT_EQ(poll_data(), 0);
        power_on_with({{FaultKind::bus_inactive, command_place(code), 0}});
        EXPECT_EQ(exchange(frame(code, 1)), Bytes(8, 0xFF));
        EXPECT_EQ(poll_data(), 0xFF);
    }
}

TEST_F(ReadoutFaults, at_places_that_never_come_change_nothing)
{
    power_on({}, {});
    const Bytes whole = read_block(BASE, 4);
    power_on_with({{FaultKind::flip, 5, 0},
                   {FaultKind::unnumbered, 5, 0},
                   {FaultKind::short_block, 2, 1},
                   {FaultKind::block_length, 2, 1},
                   {FaultKind::padded, 2, 0},
                   {FaultKind::deaf, command_place(0xC1), 1}});
    EXPECT_EQ(read_block(BASE, 4), whole);
}

} // namespace

} // namespace simulator
