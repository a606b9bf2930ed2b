// Goal: the records of a block are taken one after another for as long as a marker follows, up to
// the first wrong checksum, and never from beyond the buffer.
#include "tests/readout/stream_fixture.hpp"

namespace
{

class StreamWalk : public StreamDialogue
{
  protected:
    // What is said of this block.
    Transcript said(const Bytes &block) { return said(block.size(), block); }

    Transcript said(size_t length, const Bytes &block)
    {
        begin_again();
        pass_request();
        send_block(3, length, block);
        stop();
        run();
        return texts;
    }

    static std::string wrong(const Bytes &record)
    {
        return wrong_stream_checksum(record, GetParam().size);
    }

    // A record behind those that are good.
    static Bytes bad_record() { return spoiled(good_records(1, 99), 24); }
    static Bytes marked(Bytes record, int marker)
    {
        record[0] = static_cast<uint8_t>(marker);
        return sealed(record);
    }
};

// The record of zeros in front of its checksum: the computed one is the kind's own.
const char *checksum_of_zeros(RecordKind kind)
{
    switch (kind) {
    case RecordKind::base:
        return "4E1D";
    case RecordKind::omega:
        return "1919";
    case RecordKind::temp:
        break;
    }
    return "49AD";
}

} // namespace

INSTANTIATE_FOR_ALL_USERS(StreamWalk);

TEST_P(StreamWalk, takes_the_first_record_whatever_its_marker)
{
    for (const int marker : {0x00, 0x54, 0x56, 0xFF, 0xAA}) {
        const Bytes first = marked(good_records(1), marker);
        EXPECT_TRUE(same(said(first), {})) << marker;
        EXPECT_TRUE(same(said(chained({first, bad_record()})), {wrong(bad_record())})) << marker;
    }
}

TEST_P(StreamWalk, ends_without_a_word_where_no_marker_follows)
{
    for (const int marker : {0x00, 0x54, 0x56, 0xFF, 0xAA}) {
        Bytes second = bad_record();
        second[0] = static_cast<uint8_t>(marker);
        EXPECT_TRUE(same(said(chained({good_records(1), second, bad_record()})), {})) << marker;
    }
}

TEST_P(StreamWalk, steps_by_the_size_of_a_record)
{
    const Bytes bad = bad_record();
    EXPECT_TRUE(same(said(chained({good_records(1), bad})), {wrong(bad)}));
    EXPECT_TRUE(same(said(chained({good_records(2), bad})), {wrong(bad)}));
    EXPECT_TRUE(same(said(chained({good_records(7), bad})), {wrong(bad)}));
}

TEST_P(StreamWalk, is_not_bounded_by_the_length_of_the_block)
{
    Bytes third = bytes_of(GetParam().size, 0x00);
    third[0] = 0x55;
    EXPECT_TRUE(same(said(chained({good_records(2), {0x55}})), {wrong(third)}));
}

TEST_P(StreamWalk, takes_a_record_whose_last_byte_the_cleared_buffer_supplies)
{
    Bytes cut = record_ending_in_zero(GetParam().kind);
    cut.pop_back();
    for (const std::string &text : said(cut)) {
        EXPECT_EQ(text.find("Wrong"), std::string::npos) << text;
    }
}

TEST_P(StreamWalk, ends_at_the_end_of_a_full_block)
{
    EXPECT_TRUE(same(said(good_records(GetParam().most)), {}));
    EXPECT_TRUE(same(said(4096, good_records(GetParam().most)), {}));
}

TEST_P(StreamWalk, takes_no_record_that_reaches_beyond_the_buffer)
{
    Bytes block = good_records(GetParam().most);
    block.resize(4096, 0x55);
    EXPECT_TRUE(same(said(block), {}));
}

TEST_P(StreamWalk, tells_the_computed_checksum_and_then_the_stored_one)
{
    for (const auto &[stored, told] :
         {std::pair{0xABCD, "ABCD"}, {0x0010, "10"}, {0x0000, "0"}, {0xF00F, "F00F"}}) {
        Bytes block = golden_records(GetParam().kind).at(5).bytes;
        block[block.size() - 2] = static_cast<uint8_t>(stored & 0xFF);
        block[block.size() - 1] = static_cast<uint8_t>(stored >> 8);
        EXPECT_TRUE(
            same(said(block), {wrong_stream_checksum(checksum_of_zeros(GetParam().kind), told)}));
        EXPECT_EQ(messages, texts);
    }
}

TEST_P(StreamWalk, each_byte_of_a_record_is_under_its_checksum)
{
    for (size_t at = 0; at < GetParam().size; ++at) {
        const Bytes bad = spoiled(good_records(1), at);
        EXPECT_TRUE(same(said(bad), {wrong(bad)})) << at;
    }
}

TEST_P(StreamWalk, ends_at_the_first_wrong_checksum)
{
    const Bytes bad = bad_record();
    EXPECT_TRUE(same(said(chained({bad, good_records(2)})), {wrong(bad)}));
    EXPECT_TRUE(same(said(chained({bad, bad, bad})), {wrong(bad)}));
    EXPECT_TRUE(same(said(chained({good_records(1), bad, bad})), {wrong(bad)}));
}

TEST_P(StreamWalk, reaches_the_last_record_of_a_full_block)
{
    EXPECT_TRUE(same(said(chained({good_records(GetParam().most - 1), bad_record()})),
                     {wrong(bad_record())}));
}

TEST_P(StreamWalk, goes_on_with_the_next_block_after_a_wrong_checksum)
{
    const Bytes bad = chained({good_records(1), bad_record(), good_records(1)});
    pass_request();
    send_block(0, bad);
    send_block(19, good_records(1, 2));
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 fetched(0, bad.size()),
                                 {wrong(bad_record())},
                                 paused(),
                                 fetched(19, GetParam().size),
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(StreamWalk, begins_each_block_with_cleared_buffers)
{
    keep_buffers();
    pass_request();
    send_block(0, good_records(GetParam().most));
    send_block(7, good_records(1, GetParam().most + 1));
    stop();
    run();
    ASSERT_EQ(received_into.size(), 8U);
    for (const size_t poll : {1U, 4U, 7U}) {
        EXPECT_EQ(received_into[poll], bytes_of(4096, 0x00)) << poll;
        EXPECT_EQ(sent_from[poll], chained({bytes_of(20, 0x44), bytes_of(4076, 0x00)})) << poll;
    }
}

TEST_P(StreamWalk, result_of_the_output_changes_nothing)
{
    output_result = -1;
    pass_request();
    send_block(0, bad_record());
    send_block(0, good_records(1));
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 fetched(0, GetParam().size),
                                 {wrong(bad_record())},
                                 paused(),
                                 fetched(0, GetParam().size),
                                 paused(),
                                 STREAM_POLL})));
}
