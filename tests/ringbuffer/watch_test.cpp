// Goal: the watcher tells gaps in the time stamps, line by line, and nothing else of good records;
// what it counts and remembers lasts for one call.
#include "tests/ringbuffer/temp_stream.hpp"

namespace
{

class Watcher : public TempStream
{
  protected:
    static void look() { stm_stream_readout(poll, output); }

    // What is said of these records, in one block.
    Transcript said(const Bytes &block)
    {
        begin_again();
        pass_request();
        send(block);
        stop();
        look();
        return texts;
    }
};

Transcript loss(const std::string &difference, const std::string &nr, const std::string &rel_t,
                const std::string &count)
{
    return {"say 0 \"\\nlost sample:\\n\"", "say 0 \"difference   : " + difference + "\\n\"",
            "say 0 \"nr   : " + nr + "\\n\"", "say 0 \"rel_t: " + rel_t + "\\n\"",
            "say 0 \"count: " + count + "\\n\""};
}

} // namespace

TEST_F(Watcher, is_silent_about_time_stamps_from_1_on)
{
    pass_request();
    send(stamped_run(3, 1));
    stop();
    look();
    EXPECT_TRUE(happened(joined({{REQUEST}, fetched(144), {"sleep 20000"}, STREAM_POLL})));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}

TEST_F(Watcher, tells_a_gap_in_five_lines)
{
    EXPECT_TRUE(same(said(chained({stamped(17, 5), stamped(18, 6)})), loss("5", "17", "5", "1")));
    EXPECT_EQ(messages, texts);
    EXPECT_STREQ(stm_link.message, "count: 1\n");
}

TEST_F(Watcher, misses_the_first_record_unless_its_time_is_1)
{
    EXPECT_TRUE(same(said(stamped(1, 1)), {}));
    EXPECT_TRUE(same(said(stamped(1, 0)), loss("0", "1", "0", "1")));
    EXPECT_TRUE(same(said(stamped(1, 2)), loss("2", "1", "2", "1")));
    EXPECT_TRUE(same(said(stamped(1, -1)), loss("-1", "1", "-1", "1")));
    EXPECT_TRUE(same(said(stamped(1, 1000)), loss("1000", "1", "1000", "1")));
}

TEST_F(Watcher, tells_how_far_time_stamps_are_apart)
{
    EXPECT_TRUE(
        same(said(chained({stamped_run(10, 1), stamped(200, 13)})), loss("3", "200", "13", "11")));
    EXPECT_TRUE(same(said(chained({stamped_run(4, 1), stamped(0, 4), stamped(255, 5)})),
                     loss("0", "0", "4", "5")));
    EXPECT_TRUE(same(said(chained({stamped_run(4, 1), stamped(6, 2)})), loss("-2", "6", "2", "5")));
    EXPECT_TRUE(same(said(chained({stamped_run(4, 1), stamped(6, 6)})), loss("2", "6", "6", "5")));
}

TEST_F(Watcher, numbers_of_records_are_no_time_stamps)
{
    EXPECT_TRUE(same(said(chained({stamped(9, 1), stamped(9, 2), stamped(0, 3)})), {}));
}

TEST_F(Watcher, time_stamps_go_on_beyond_the_greatest)
{
    EXPECT_TRUE(same(said(chained({stamped(1, 0x7FFFFFFF), stamped(2, 0x80000000)})),
                     loss("2147483647", "1", "2147483647", "1")));
    EXPECT_TRUE(same(said(chained({stamped(1, 0xFFFFFFFF), stamped(2, 0), stamped(3, 1)})),
                     loss("-1", "1", "-1", "1")));
}

TEST_F(Watcher, differences_wrap_at_32_bits)
{
    EXPECT_TRUE(same(
        said(chained({stamped(1, 1), stamped(2, 0x80000001), stamped(3, 0)})),
        joined({loss("-2147483648", "2", "-2147483647", "2"), loss("2147483647", "3", "0", "3")})));
    EXPECT_TRUE(same(said(chained({stamped(1, 0x80000000), stamped(2, 0x7FFFFFFF)})),
                     joined({loss("-2147483648", "1", "-2147483648", "1"),
                             loss("-1", "2", "2147483647", "2")})));
}

TEST_F(Watcher, all_four_bytes_of_a_time_stamp_count)
{
    EXPECT_TRUE(same(said(stamped(1, 0x01020304)), loss("16909060", "1", "16909060", "1")));
}

TEST_F(Watcher, each_gap_is_told)
{
    EXPECT_TRUE(same(
        said(chained({stamped(1, 3), stamped(2, 6), stamped(3, 7), stamped(4, 9)})),
        joined({loss("3", "1", "3", "1"), loss("3", "2", "6", "2"), loss("2", "4", "9", "4")})));
}

TEST_F(Watcher, remembers_time_and_count_from_block_to_block)
{
    pass_request();
    send(stamped_run(3, 1));
    send(stamped_run(2, 4));
    idle(301);
    send(stamped(44, 8));
    stop();
    look();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 fetched(144),
                                 {"sleep 20000"},
                                 fetched(96),
                                 {"sleep 20000"},
                                 STREAM_TIMEOUT,
                                 fetched(48),
                                 loss("3", "44", "8", "6"),
                                 {"sleep 20000"},
                                 STREAM_POLL})));
}

TEST_F(Watcher, remembers_no_record_with_a_wrong_checksum)
{
    pass_request();
    send(chained({stamped_run(2, 1), bad_record(), stamped(3, 3)}));
    send(chained({stamped(77, 3), stamped(78, 5)}));
    stop();
    look();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 fetched(192),
                                 {complaint(), "sleep 20000"},
                                 fetched(96),
                                 loss("2", "78", "5", "4"),
                                 {"sleep 20000"},
                                 STREAM_POLL})));
}

TEST_F(Watcher, remembers_time_and_count_over_an_empty_block)
{
    pass_request();
    send(stamped_run(3, 1));
    head(9, 0, {});
    pass_request();
    send(chained({stamped(1, 4), stamped(2, 6)}));
    stop();
    look();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 fetched(144),
                                 {"sleep 20000"},
                                 STREAM_POLL,
                                 {remark("No data available\n"), REQUEST},
                                 fetched(96),
                                 loss("2", "2", "6", "5"),
                                 {"sleep 20000"},
                                 STREAM_POLL})));
}

TEST_F(Watcher, remembers_nothing_from_call_to_call)
{
    for (int call = 0; call < 2; ++call) {
        EXPECT_TRUE(same(said(stamped_run(2, 2)), loss("2", "1", "2", "1"))) << call;
    }
}

TEST_F(Watcher, comes_to_the_end_of_each_block_before_it_pauses)
{
    pass_request();
    send(bad_record());
    send(stamped(5, 5));
    stop();
    output_result = -1;
    look();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 fetched(48),
                                 {complaint(), "sleep 20000"},
                                 fetched(48),
                                 loss("5", "5", "5", "1"),
                                 {"sleep 20000"},
                                 STREAM_POLL})));
}

TEST_F(Watcher, leaves_the_ring_alone_and_needs_none)
{
    segment = bytes_of(7704, 0x5E);
    for (RingBuffer *attached :
         {reinterpret_cast<RingBuffer *>(segment.data()), static_cast<RingBuffer *>(nullptr)}) {
        begin_again();
        stm_link.ring = attached;
        pass_request();
        send(stamped_run(3, 1));
        stop();
        look();
        EXPECT_TRUE(happened(joined({{REQUEST}, fetched(144), {"sleep 20000"}, STREAM_POLL})));
    }
    EXPECT_EQ(segment, bytes_of(7704, 0x5E));
}
