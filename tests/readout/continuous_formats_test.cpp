// Goal: a continuous read-out shows each good record in the format that it is asked for, and
// nothing in any other; its CSV header is the one that the live stream has always had.
#include "tests/readout/continuous_fixture.hpp"

#include <cerrno>
#include <climits>

namespace
{

using CsvHeader = ContinuousDialogue;
using ShownRecord = ContinuousDialogue;

// The first 48 bytes of the ordinary record: those of the shortest end with its checksum.
constexpr char DUMP_BEGIN[] =
    "Received value: \n"
    "0x55 0x11 0x12 0x13 0x14 0x15 0x16 0x17 0x18 0x19 0x1A 0x1B 0x1C 0x1D 0x1E 0x1F "
    "0x20 0x21 0x22 0x23 0x24 0x25 0x26 0x27 0x28 0x29 0x2A 0x2B 0x2C 0x2D 0x2E 0x2F "
    "0x30 0x31 0x32 0x33 0x34 0x35 0x36 0x37 0x38 0x39 0x3A 0x3B 0x3C 0x3D ";

std::string dump_of_ordinary(RecordKind kind)
{
    return DUMP_BEGIN + std::string(kind == RecordKind::temp ? "0xDD 0xE1 \n" : "0x3E 0x3F \n");
}

} // namespace

INSTANTIATE_FOR_ALL_CONTINUOUS(CsvHeader);
INSTANTIATE_FOR_ALL_CONTINUOUS(ShownRecord);

TEST_P(CsvHeader, comes_before_the_first_request_and_once)
{
    pass_request();
    send(golden(0).bytes);
    idle(301);
    send(golden(1).bytes);
    stop();
    read(CSV);
    EXPECT_TRUE(happened(joined({{say(GetParam().header, 1), request()},
                                 fetched(GetParam().size),
                                 {say(golden(0).csv, 1)},
                                 paused(),
                                 STREAM_TIMEOUT,
                                 fetched(GetParam().size),
                                 {say(golden(1).csv, 1)},
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(CsvHeader, has_come_when_the_first_request_fails)
{
    fail_next(EIO);
    read(CSV);
    EXPECT_TRUE(
        happened({say(GetParam().header, 1), request(), R"(perror "SPI datatransfer" EIO)"}));
    EXPECT_STREQ(stm_link.message, GetParam().header);
}

TEST_P(CsvHeader, belongs_to_no_other_format)
{
    for (const int format : {HEX, TEXT, SILENT, 4, -1, INT_MAX, INT_MIN, 256 + CSV}) {
        begin_again();
        pass_request();
        stop();
        read(format);
        EXPECT_TRUE(happened(joined({{request()}, STREAM_POLL}))) << format;
    }
}

TEST_P(ShownRecord, is_labelled_text_in_format_2)
{
    for (size_t i = 0; i < 6; ++i) {
        begin_again();
        pass_request();
        send(golden(i).bytes);
        stop();
        read(TEXT);
        EXPECT_TRUE(happened(joined({{request()},
                                     fetched(GetParam().size),
                                     {say(golden(i).text, 1)},
                                     paused(),
                                     STREAM_POLL})))
            << golden(i).what;
    }
}

TEST_P(ShownRecord, is_a_csv_line_in_format_3)
{
    for (size_t i = 0; i < 5; ++i) {
        begin_again();
        pass_request();
        send(golden(i).bytes);
        stop();
        read(CSV);
        EXPECT_TRUE(same(texts, {say(GetParam().header, 1), say(golden(i).csv, 1)}))
            << golden(i).what;
        EXPECT_EQ(messages, texts);
    }
}

TEST_P(ShownRecord, has_a_csv_line_with_every_number_but_0)
{
    for (int nr = 1; nr < 256; ++nr) {
        begin_again();
        pass_request();
        send(record(GetParam().kind, {{"nr", nr}}));
        stop();
        read(CSV);
        ASSERT_EQ(texts.size(), 2U) << nr;
        EXPECT_EQ(texts[1].rfind("say 1 \"" + std::to_string(nr) + ";", 0), 0U) << nr;
    }
}

TEST_P(ShownRecord, is_each_of_a_block_in_its_order)
{
    const Bytes block =
        chained({golden(2).bytes, golden(5).bytes, golden(4).bytes, golden(0).bytes});
    pass_request();
    send(block);
    stop();
    read(TEXT);
    EXPECT_TRUE(same(texts, {say(golden(2).text, 1), say(golden(5).text, 1), say(golden(4).text, 1),
                             say(golden(0).text, 1)}));
}

TEST_P(ShownRecord, without_a_number_has_no_csv_line_but_leaves_one_in_the_message)
{
    pass_request();
    send(chained({golden(0).bytes, golden(5).bytes}));
    stop();
    read(CSV);
    EXPECT_TRUE(same(texts, {say(GetParam().header, 1), say(golden(0).csv, 1)}));
    EXPECT_EQ(stm_link.message, golden(5).csv);
}

TEST_P(ShownRecord, without_a_number_does_not_hide_the_next_one)
{
    pass_request();
    send(chained({golden(5).bytes, golden(1).bytes}));
    stop();
    read(CSV);
    EXPECT_TRUE(same(texts, {say(GetParam().header, 1), say(golden(1).csv, 1)}));
}

TEST_P(ShownRecord, is_the_first_48_bytes_of_its_block_in_format_1)
{
    const std::string dump = dump_of_ordinary(GetParam().kind);
    pass_request();
    send(chained({golden(0).bytes, golden(1).bytes, golden(5).bytes}));
    stop();
    read(HEX);
    EXPECT_TRUE(happened(joined({{request()},
                                 fetched(3 * GetParam().size),
                                 {say(dump, 1), say(dump, 1), say(dump, 1)},
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(ShownRecord, dump_is_that_of_its_own_block)
{
    pass_request();
    send(golden(1).bytes);
    send(golden(0).bytes);
    stop();
    read(HEX);
    ASSERT_EQ(texts.size(), 2U);
    EXPECT_EQ(texts[0].rfind("say 1 \"Received value: \\n0x55 0xC1 0xC2 ", 0), 0U);
    EXPECT_EQ(texts[1], say(dump_of_ordinary(GetParam().kind), 1));
}

TEST_P(ShownRecord, texts_and_dumps_leave_the_message_alone)
{
    for (const int format : {HEX, TEXT}) {
        begin_again();
        pass_request();
        send(golden(0).bytes);
        stop();
        read(format);
        EXPECT_EQ(messages, Transcript({say(LAST_REPORT, 1)}));
        EXPECT_STREQ(stm_link.message, LAST_REPORT);
    }
}

TEST_P(ShownRecord, is_checked_but_not_shown_in_other_formats)
{
    for (const int format : {SILENT, 4, -1, INT_MAX, INT_MIN, 256 + TEXT}) {
        const Bytes bad = spoiled(golden(1).bytes, 9);
        begin_again();
        pass_request();
        send(chained({golden(0).bytes, bad}));
        stop();
        read(format);
        EXPECT_TRUE(same(texts, {wrong_stream_checksum(bad, GetParam().size)})) << format;
    }
}

TEST_P(ShownRecord, comes_before_the_complaint_about_the_next_one)
{
    const Bytes bad = spoiled(golden(1).bytes, 9);
    pass_request();
    send(chained({golden(0).bytes, bad, golden(2).bytes}));
    send(golden(3).bytes);
    stop();
    read(TEXT);
    EXPECT_TRUE(
        happened(joined({{request()},
                         fetched(3 * GetParam().size),
                         {say(golden(0).text, 1), wrong_stream_checksum(bad, GetParam().size)},
                         paused(),
                         fetched(GetParam().size),
                         {say(golden(3).text, 1)},
                         paused(),
                         STREAM_POLL})));
}

TEST_P(ShownRecord, result_of_the_output_changes_nothing)
{
    output_result = -1;
    for (const int format : {HEX, TEXT, CSV}) {
        begin_again();
        pass_request();
        send(chained({golden(0).bytes, golden(1).bytes}));
        stop();
        read(format);
        EXPECT_EQ(texts.size(), format == CSV ? 3U : 2U);
    }
}

TEST_P(ShownRecord, needs_no_ring)
{
    ring.writer_open = 1;
    ring.reader_open = 1;
    pass_request();
    send(golden(0).bytes);
    stop();
    read(TEXT);
    EXPECT_EQ(ring.writer_open, 1);
    EXPECT_EQ(ring.reader_open, 1);
    EXPECT_EQ(ring.count, 0);
}
