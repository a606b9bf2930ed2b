// Goal: the watcher tells a filling buffer of the co-processor, marks each thousandth record on
// standard error, and pauses where it always did.
#include "tests/ringbuffer/temp_stream.hpp"

#include <algorithm>

namespace
{

class FillingBuffer : public TempStream
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

    // Good records, 80 a block, the first with this time stamp.
    void send_many(int count, int first)
    {
        for (int sent = 0; sent < count; sent += 80) {
            send(stamped_run(std::min(80, count - sent), first + sent));
        }
    }
};

using CountedRecords = FillingBuffer;

Transcript overflow(const std::string &nr, const std::string &rel_t, const std::string &count,
                    const std::string &buffered)
{
    return {"say 0 \"\\nbuffer overflow:\\n\"", "say 0 \"nr   : " + nr + "\\n\"",
            "say 0 \"rel_t: " + rel_t + "\\n\"", "say 0 \"count: " + count + "\\n\"",
            "say 0 \"buffered: " + buffered + "\\n\""};
}

const Transcript LOST = {"say 0 \"\\nlost sample:\\n\"", "say 0 \"difference   : -7\\n\"",
                         "say 0 \"nr   : 8\\n\"", "say 0 \"rel_t: -6\\n\"",
                         "say 0 \"count: 2\\n\""};
const Transcript DOT = {remark("."), "sleep 40000"};

} // namespace

TEST_F(FillingBuffer, is_told_from_191_records_on)
{
    EXPECT_TRUE(same(said(stamped(1, 1, 0)), {}));
    EXPECT_TRUE(same(said(stamped(1, 1, 127)), {}));
    EXPECT_TRUE(same(said(stamped(1, 1, 128)), {}));
    EXPECT_TRUE(same(said(stamped(1, 1, 190)), {}));
    EXPECT_TRUE(same(said(stamped(1, 1, 191)), overflow("1", "1", "1", "191")));
    EXPECT_TRUE(same(said(stamped(1, 1, 255)), overflow("1", "1", "1", "255")));
    EXPECT_EQ(messages, texts);
    EXPECT_STREQ(stm_link.message, "buffered: 255\n");
}

TEST_F(FillingBuffer, is_told_for_each_record)
{
    EXPECT_TRUE(same(said(chained({stamped(255, 1, 200), stamped(1, 2, 190), stamped(2, 3, 199)})),
                     joined({overflow("255", "1", "1", "200"), overflow("2", "3", "3", "199")})));
}

TEST_F(FillingBuffer, is_told_behind_a_gap_of_the_same_record)
{
    pass_request();
    send(chained({stamped(7, 1), stamped(8, -6, 191), stamped(9, -5)}));
    stop();
    look();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 fetched(144),
                                 LOST,
                                 overflow("8", "-6", "2", "191"),
                                 {"sleep 20000"},
                                 STREAM_POLL})));
}

TEST_F(FillingBuffer, is_not_told_of_a_record_with_a_wrong_checksum)
{
    const Bytes bad = spoiled(stamped(1, 1, 255), 3);
    EXPECT_TRUE(same(said(bad), {wrong_stream_checksum(bad, 48)}));
}

TEST_F(CountedRecords, each_thousandth_has_a_dot_and_a_pause)
{
    pass_request();
    send_many(2001, 1);
    stop();
    look();
    EXPECT_TRUE(same(texts, {remark("."), remark(".")}));
    EXPECT_EQ(slept_us, 26U * 20'000 + 2 * 40'000);
}

TEST_F(CountedRecords, dot_comes_before_its_pause_and_both_before_the_next_record)
{
    pass_request();
    send_many(960, 1);
    send(chained({stamped_run(40, 961), stamped(3, 1002)}));
    stop();
    look();
    const Transcript full_blocks = times(12, joined({fetched(3840), {"sleep 20000"}}));
    EXPECT_TRUE(happened(
        joined({{REQUEST},
                full_blocks,
                fetched(1968),
                DOT,
                {"say 0 \"\\nlost sample:\\n\"", "say 0 \"difference   : 2\\n\"",
                 "say 0 \"nr   : 3\\n\"", "say 0 \"rel_t: 1002\\n\"", "say 0 \"count: 1001\\n\""},
                {"sleep 20000"},
                STREAM_POLL})));
}

TEST_F(CountedRecords, dot_comes_behind_the_reports_of_its_record)
{
    pass_request();
    send_many(960, 1);
    send(chained({stamped_run(39, 961), stamped(4, 1002, 210)}));
    stop();
    look();
    const Transcript lost = {"say 0 \"\\nlost sample:\\n\"", "say 0 \"difference   : 3\\n\"",
                             "say 0 \"nr   : 4\\n\"", "say 0 \"rel_t: 1002\\n\"",
                             "say 0 \"count: 1000\\n\""};
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 times(12, joined({fetched(3840), {"sleep 20000"}})),
                                 fetched(1920),
                                 lost,
                                 overflow("4", "1002", "1000", "210"),
                                 DOT,
                                 {"sleep 20000"},
                                 STREAM_POLL})));
}

TEST_F(CountedRecords, do_not_include_those_with_a_wrong_checksum)
{
    pass_request();
    send_many(960, 1);
    send(chained({stamped_run(39, 961), bad_record()}));
    send(stamped(1, 1000));
    stop();
    look();
    EXPECT_TRUE(happened(joined({{REQUEST},
                                 times(12, joined({fetched(3840), {"sleep 20000"}})),
                                 fetched(1920),
                                 {complaint(), "sleep 20000"},
                                 fetched(48),
                                 DOT,
                                 {"sleep 20000"},
                                 STREAM_POLL})));
}

TEST_F(CountedRecords, dots_begin_anew_with_each_call)
{
    for (int call = 0; call < 2; ++call) {
        begin_again();
        pass_request();
        send_many(999, 1);
        stop();
        look();
        EXPECT_TRUE(same(texts, {})) << call;
    }
}

TEST_F(CountedRecords, dots_leave_the_message_alone)
{
    pass_request();
    send_many(1000, 1);
    stop();
    look();
    EXPECT_TRUE(same(texts, {remark(".")}));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}
