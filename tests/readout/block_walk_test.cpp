// Goal: the records of a block are taken one after another for as long as a marker follows, up to
// the first wrong checksum, and never from beyond the buffer.
#include "tests/readout/block_fixture.hpp"

#include <algorithm>
#include <cstring>

namespace
{

class BlockWalk : public BlockDialogue
{
  protected:
    // What a read-out of one record shows of this block.
    void show(const Bytes &block, int mode = TEXT) { show(block.size(), block, mode); }

    void show(size_t length, const Bytes &block, int mode = TEXT)
    {
        begin_again();
        pass_request();
        ready_with(length, block);
        read(1, mode);
    }

    // So many records and then, up to the very end of the buffer, markers.
    static Bytes full_block(int count)
    {
        Bytes bytes = records(GetParam().kind, count);
        bytes.resize(4096, 0x55);
        return bytes;
    }

    static Transcript shown(std::initializer_list<size_t> indices)
    {
        Transcript expected;
        for (const size_t index : indices) {
            expected.push_back(say(golden(index).text, 1));
        }
        return expected;
    }
};

struct Offsets {
    int second;
    int third;
    int last; // of a full block
};

Offsets offsets_of(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return {56, 112, 4032};
    case RecordKind::omega:
        return {52, 104, 4004};
    case RecordKind::temp:
        break;
    }
    return {48, 96, 4032};
}

} // namespace

INSTANTIATE_FOR_ALL_OPERATIONS(BlockWalk);

TEST_P(BlockWalk, takes_all_records_in_their_order)
{
    Bytes bytes;
    for (size_t i = 0; i < 6; ++i) {
        bytes = chained({bytes, golden(i).bytes});
    }
    show(bytes);
    EXPECT_TRUE(same(texts, shown({0, 1, 2, 3, 4, 5})));
}

TEST_P(BlockWalk, takes_a_full_block_to_its_last_record)
{
    const int count = GetParam().most;
    show(records(GetParam().kind, count), HEX);
    EXPECT_EQ(texts.size(), static_cast<size_t>(count));
}

TEST_P(BlockWalk, takes_the_first_record_whatever_its_marker)
{
    for (const int marker : {0x00, 0x54, 0x56, 0xFF, 0xAA}) {
        Bytes bytes = golden(0).bytes;
        bytes[0] = static_cast<uint8_t>(marker);
        show(chained({sealed(bytes), golden(1).bytes}));
        ASSERT_EQ(texts.size(), 2U) << marker;
        EXPECT_EQ(texts[0].rfind("say 1 \"stm_uint8_t  nr   : 17\\n", 0), 0U) << marker;
        EXPECT_EQ(texts[1], say(golden(1).text, 1)) << marker;
    }
}

TEST_P(BlockWalk, ends_without_a_word_where_no_marker_follows)
{
    for (const int marker : {0x00, 0x54, 0x56, 0xFF, 0xAA}) {
        Bytes bytes = golden(1).bytes;
        bytes[0] = static_cast<uint8_t>(marker);
        show(chained({golden(0).bytes, sealed(bytes), golden(2).bytes}));
        EXPECT_TRUE(same(texts, shown({0}))) << marker;
    }
}

TEST_P(BlockWalk, ends_at_the_zeros_behind_the_block)
{
    show(chained({golden(0).bytes, golden(1).bytes}));
    EXPECT_TRUE(same(texts, shown({0, 1})));
}

TEST_P(BlockWalk, ends_at_a_rest_without_a_marker)
{
    show(chained({golden(0).bytes, bytes_of(44, 0x11)}));
    EXPECT_TRUE(same(texts, shown({0})));
}

TEST_P(BlockWalk, takes_a_rest_with_a_marker_for_a_record)
{
    Bytes rest = golden(1).bytes;
    rest.resize(44);
    show(chained({golden(0).bytes, rest}));
    EXPECT_TRUE(
        same(texts, joined({shown({0}), {wrong_checksum(offsets_of(GetParam().kind).second)}})));
}

// Behind the block the buffer is zero, as the byte is that did not come.
TEST_P(BlockWalk, takes_a_record_whose_last_byte_lies_behind_the_block)
{
    Bytes cut = record_ending_in_zero(GetParam().kind);
    cut.pop_back();
    show(chained({golden(0).bytes, cut}), HEX);
    EXPECT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[1], texts[0]);
}

TEST_P(BlockWalk, takes_a_record_that_is_longer_than_its_block_but_does_not_count_it)
{
    Bytes cut = record_ending_in_zero(GetParam().kind);
    cut.pop_back();
    pass_request();
    ready_with(cut);
    pass_request();
    ready_with(golden(0).bytes);
    read(1, HEX);
    EXPECT_EQ(texts.size(), 2U);
    EXPECT_EQ(stm_link.tx_short[1], 1);
}

// No device delivers more than the host clocks; the driver here writes on.
TEST_P(BlockWalk, goes_on_behind_the_block_while_a_marker_follows)
{
    const Bytes more = chained({golden(1).bytes, golden(2).bytes});
    watch = [&more](const spi_ioc_transfer &exchange) {
        if (exchange.len == GetParam().size) {
            std::copy(more.begin(), more.end(), stm_link.rx_buffer + GetParam().size);
        }
    };
    pass_request();
    ready_with(golden(0).bytes);
    pass_request();
    ready_with({});
    type_line(2, "s\n");
    read(3, TEXT);
    EXPECT_TRUE(happened(
        joined({{request(3)}, block(GetParam().size), {request(2)}, shown({0, 1, 2}), POLL})));
}

TEST_P(BlockWalk, ends_at_the_end_of_the_buffer_whatever_markers_are_there)
{
    const int count = GetParam().most;
    pass_request();
    ready_with(full_block(count));
    read(count, HEX);
    EXPECT_EQ(texts.size(), static_cast<size_t>(count));
    const std::string text = texts[0];
    EXPECT_EQ(std::count(texts.begin(), texts.end(), text), count);
}

TEST_P(BlockWalk, full_buffer_counts_by_its_whole_records)
{
    const int count = GetParam().most;
    pass_request();
    ready_with(full_block(count));
    type_line(2, "s\n");
    read(count + 1, SILENT);
    EXPECT_TRUE(happened(joined({{request(GetParam().most)}, block(4096), {request(1)}, POLL})));
}

TEST_P(BlockWalk, ends_in_a_buffer_full_of_markers_at_the_first_checksum)
{
    show(bytes_of(4096, 0x55));
    EXPECT_TRUE(same(texts, Transcript({wrong_checksum(0)})));
}

TEST_P(BlockWalk, wrong_checksum_of_the_first_record_drops_the_block)
{
    show(chained({spoiled(golden(0).bytes, 1), golden(1).bytes, golden(2).bytes}));
    EXPECT_TRUE(
        same(texts, Transcript({R"(say 0 "Wrong checksum detected (iCurrentBlockIndex = 0)\n")"})));
    EXPECT_TRUE(same(messages, texts));
}

TEST_P(BlockWalk, wrong_checksum_of_the_second_record_drops_it_and_all_behind_it)
{
    const Bytes second = spoiled(golden(1).bytes, GetParam().size - 1);
    show(chained({golden(0).bytes, second, golden(2).bytes}));
    EXPECT_TRUE(
        same(texts, joined({shown({0}), {wrong_checksum(offsets_of(GetParam().kind).second)}})));
    EXPECT_EQ(messages.back(), texts.back());
}

TEST_P(BlockWalk, wrong_checksum_of_the_third_record_leaves_two)
{
    const Bytes third = spoiled(golden(2).bytes, GetParam().size - 3);
    show(chained({golden(0).bytes, golden(1).bytes, third, golden(3).bytes}));
    EXPECT_TRUE(
        same(texts, joined({shown({0, 1}), {wrong_checksum(offsets_of(GetParam().kind).third)}})));
}

TEST_P(BlockWalk, wrong_checksum_of_the_last_record_of_a_full_block_leaves_all_others)
{
    const int count = GetParam().most;
    const int last = offsets_of(GetParam().kind).last;
    show(spoiled(records(GetParam().kind, count), static_cast<size_t>(last) + 2), HEX);
    EXPECT_EQ(texts.size(), static_cast<size_t>(count));
    EXPECT_EQ(texts.back(), wrong_checksum(last));
}

TEST_P(BlockWalk, wrong_checksum_is_told_in_every_mode)
{
    for (const int mode : {HEX, TEXT, SILENT, 4, -1}) {
        show(spoiled(golden(0).bytes, 5), mode);
        EXPECT_TRUE(same(texts, Transcript({wrong_checksum(0)}))) << mode;
        EXPECT_STREQ(stm_link.message, "Wrong checksum detected (iCurrentBlockIndex = 0)\n");
    }
}

TEST_P(BlockWalk, goes_on_with_the_next_block_after_a_wrong_checksum)
{
    const Bytes bad = chained({golden(0).bytes, spoiled(golden(1).bytes, 30), golden(2).bytes});
    pass_request();
    ready_with(bad);
    pass_request();
    ready_with(golden(3).bytes);
    read(4, TEXT);
    EXPECT_TRUE(happened(joined({{request(4)},
                                 block(bad.size()),
                                 {request(1)},
                                 shown({0}),
                                 {wrong_checksum(offsets_of(GetParam().kind).second)},
                                 block(GetParam().size),
                                 shown({3}),
                                 CLOSING})));
}

TEST_P(BlockWalk, of_the_last_block_is_followed_by_the_synchronisation_after_a_wrong_checksum)
{
    pass_request();
    ready_with(spoiled(golden(0).bytes, 30));
    read(1, TEXT);
    EXPECT_TRUE(
        happened(joined({{request(1)}, block(GetParam().size), {wrong_checksum(0)}, CLOSING})));
}
