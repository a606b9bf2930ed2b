// Goal: each mode hands on what it always did: CSV through the message and with its header, text
// and hex without it, the same hex for all records of a block, and nothing in modes that do not
// exist.
#include "tests/readout/block_fixture.hpp"

namespace
{

class BlockModes : public BlockDialogue
{
  protected:
    void serve_block(const Bytes &bytes)
    {
        pass_request();
        ready_with(bytes);
    }

    static std::string header() { return golden_header(GetParam().kind); }
};

// The first 48 bytes of an ordinary record; with the last two, that of a temperature has its
// checksum, and the others are not at their end yet.
constexpr char FIRST_46_BYTES[] =
    "Received value: \n"
    "0x55 0x11 0x12 0x13 0x14 0x15 0x16 0x17 0x18 0x19 0x1A 0x1B 0x1C 0x1D 0x1E 0x1F "
    "0x20 0x21 0x22 0x23 0x24 0x25 0x26 0x27 0x28 0x29 0x2A 0x2B 0x2C 0x2D 0x2E 0x2F "
    "0x30 0x31 0x32 0x33 0x34 0x35 0x36 0x37 0x38 0x39 0x3A 0x3B 0x3C 0x3D ";

std::string dump_of(RecordKind kind)
{
    const char *last_two = kind == RecordKind::temp ? "0xDD 0xE1 \n" : "0x3E 0x3F \n";
    return std::string(FIRST_46_BYTES) + last_two;
}

} // namespace

INSTANTIATE_FOR_ALL_OPERATIONS(BlockModes);

TEST_P(BlockModes, are_those_of_the_interface)
{
    EXPECT_EQ(READOUT_HEX, HEX);
    EXPECT_EQ(READOUT_TEXT, TEXT);
    EXPECT_EQ(READOUT_CSV, CSV);
}

TEST_P(BlockModes, text_is_handed_on_whole_and_leaves_the_message_alone)
{
    const Bytes bytes = chained({golden(3).bytes, golden(5).bytes});
    serve_block(bytes);
    read(2, TEXT);
    EXPECT_TRUE(happened(joined({{request(2)},
                                 block(bytes.size()),
                                 {say(golden(3).text, 1), say(golden(5).text, 1)},
                                 CLOSING})));
    EXPECT_TRUE(same(messages, times(2, {say(LAST_REPORT, 1)})));
}

TEST_P(BlockModes, csv_begins_with_a_header_before_the_first_request)
{
    const Bytes bytes = chained({golden(0).bytes, golden(3).bytes});
    serve_block(bytes);
    read(2, CSV);
    EXPECT_TRUE(happened(joined({{say(header(), 1)},
                                 {request(2)},
                                 block(bytes.size()),
                                 {say(golden(0).csv, 1), say(golden(3).csv, 1)},
                                 CLOSING})));
    EXPECT_TRUE(same(messages, texts));
    EXPECT_EQ(stm_link.message, golden(3).csv);
}

TEST_P(BlockModes, csv_has_one_header_for_all_blocks)
{
    serve_block(golden(0).bytes);
    serve_block(golden(1).bytes);
    read(2, CSV);
    EXPECT_TRUE(happened(joined({{say(header(), 1)},
                                 {request(2)},
                                 block(GetParam().size),
                                 {request(1), say(golden(0).csv, 1)},
                                 block(GetParam().size),
                                 {say(golden(1).csv, 1)},
                                 CLOSING})));
}

TEST_P(BlockModes, csv_leaves_out_a_record_without_a_number_but_leaves_its_line_in_the_message)
{
    serve_block(chained({golden(0).bytes, golden(5).bytes}));
    read(2, CSV);
    EXPECT_TRUE(same(texts, Transcript({say(header(), 1), say(golden(0).csv, 1)})));
    EXPECT_EQ(stm_link.message, golden(5).csv);
}

TEST_P(BlockModes, csv_goes_on_behind_a_record_without_a_number)
{
    serve_block(chained({golden(5).bytes, golden(5).bytes, golden(1).bytes}));
    read(3, CSV);
    EXPECT_TRUE(same(texts, Transcript({say(header(), 1), say(golden(1).csv, 1)})));
}

TEST_P(BlockModes, csv_of_records_without_numbers_is_its_header)
{
    serve_block(golden(5).bytes);
    read(1, CSV);
    EXPECT_TRUE(same(texts, Transcript({say(header(), 1)})));
}

TEST_P(BlockModes, csv_leaves_out_no_number_but_0)
{
    for (int number = 1; number < 256; ++number) {
        begin_again();
        serve_block(record(GetParam().kind, {{"nr", number}}));
        read(1, CSV);
        EXPECT_EQ(texts.size(), 2U) << number;
    }
}

TEST_P(BlockModes, csv_stopped_at_once_is_its_header)
{
    type_line(1, "s\n");
    read(1, CSV);
    EXPECT_TRUE(happened(joined({{say(header(), 1), request(1)}, POLL})));
    EXPECT_EQ(stm_link.message, header());
}

TEST_P(BlockModes, csv_lines_and_reports_follow_each_other_in_the_message)
{
    serve_block(chained({golden(0).bytes, spoiled(golden(1).bytes, 9)}));
    read(1, CSV);
    EXPECT_EQ(texts.size(), 3U);
    EXPECT_TRUE(same(messages, texts));
    EXPECT_EQ(texts.back(), wrong_checksum(static_cast<int>(GetParam().size)));
}

TEST_P(BlockModes, hex_shows_the_first_48_bytes_of_the_block_for_each_record)
{
    const Bytes bytes = chained({golden(0).bytes, golden(1).bytes, golden(5).bytes});
    serve_block(bytes);
    read(3, HEX);
    EXPECT_TRUE(happened(joined({{request(3)},
                                 block(bytes.size()),
                                 times(3, {say(dump_of(GetParam().kind), 1)}),
                                 CLOSING})));
    EXPECT_TRUE(same(messages, times(3, {say(LAST_REPORT, 1)})));
    EXPECT_EQ(stm_link.message, std::string(LAST_REPORT));
}

TEST_P(BlockModes, hex_shows_each_block_its_own_bytes)
{
    serve_block(golden(1).bytes);
    serve_block(golden(0).bytes);
    read(2, HEX);
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_NE(texts[0], texts[1]);
    EXPECT_EQ(texts[1], say(dump_of(GetParam().kind), 1));
}

TEST_P(BlockModes, that_do_not_exist_show_nothing_and_leave_the_message_alone)
{
    for (const int mode : {0, 4, -1, 255, 258}) {
        begin_again();
        serve_block(chained({golden(0).bytes, golden(1).bytes}));
        read(2, mode);
        EXPECT_TRUE(happened(joined({{request(2)}, block(2 * GetParam().size), CLOSING}))) << mode;
        EXPECT_EQ(stm_link.message, std::string(LAST_REPORT));
    }
}

TEST_P(BlockModes, that_do_not_exist_tell_of_time_outs_all_the_same)
{
    pass_request();
    busy(301);
    ready_with(golden(0).bytes);
    read(1, 4);
    EXPECT_TRUE(happened(joined({{request(1)}, TIMEOUT, block(GetParam().size), CLOSING})));
}
