// Goal: of the continuous read-outs only the one for records with a temperature pauses: after every
// block, and longer after every tenth, whatever the blocks hold.
#include "tests/readout/continuous_fixture.hpp"

namespace
{

class ContinuousPause : public ContinuousDialogue
{
  protected:
    // Blocks of one good record each.
    void send_blocks(int count)
    {
        for (int i = 0; i < count; ++i) {
            send(golden(0).bytes);
        }
    }

    static Transcript block() { return fetched(GetParam().size); }
    static Transcript blocks(int count) { return times(count, joined({block(), paused()})); }
    static Transcript tenth_block() { return joined({block(), long_paused()}); }
};

} // namespace

INSTANTIATE_FOR_ALL_CONTINUOUS(ContinuousPause);

TEST_P(ContinuousPause, follows_each_of_nine_blocks)
{
    pass_request();
    send_blocks(9);
    stop();
    read(SILENT);
    EXPECT_TRUE(happened(joined({{request()}, blocks(9), STREAM_POLL})));
}

TEST_P(ContinuousPause, is_longer_after_each_tenth_block)
{
    pass_request();
    send_blocks(31);
    stop();
    read(SILENT);
    EXPECT_TRUE(happened(joined({{request()},
                                 blocks(9),
                                 tenth_block(),
                                 blocks(9),
                                 tenth_block(),
                                 blocks(9),
                                 tenth_block(),
                                 blocks(1),
                                 STREAM_POLL})));
    EXPECT_EQ(slept_us, GetParam().pauses ? 31U * 20'000 + 3 * 60'000 : 0);
}

TEST_P(ContinuousPause, comes_after_the_records)
{
    pass_request();
    for (int i = 0; i < 10; ++i) {
        send(golden(1).bytes);
    }
    stop();
    read(TEXT);
    const Transcript shown = joined({block(), {say(golden(1).text, 1)}});
    EXPECT_TRUE(happened(joined(
        {{request()}, times(9, joined({shown, paused()})), shown, long_paused(), STREAM_POLL})));
}

TEST_P(ContinuousPause, counts_blocks_with_a_wrong_checksum)
{
    const Bytes bad = spoiled(golden(0).bytes, 17);
    const Transcript complaint = {wrong_stream_checksum(bad, GetParam().size)};
    pass_request();
    send_blocks(5);
    send(bad);
    send_blocks(3);
    send(bad);
    send_blocks(1);
    stop();
    read(SILENT);
    EXPECT_TRUE(happened(joined({{request()},
                                 blocks(5),
                                 block(),
                                 complaint,
                                 paused(),
                                 blocks(3),
                                 block(),
                                 complaint,
                                 long_paused(),
                                 blocks(1),
                                 STREAM_POLL})));
}

TEST_P(ContinuousPause, counts_blocks_and_not_records)
{
    const Bytes six = chained({golden(0).bytes, golden(1).bytes, golden(2).bytes, golden(3).bytes,
                               golden(4).bytes, golden(5).bytes});
    pass_request();
    for (int i = 0; i < 4; ++i) {
        send(six);
    }
    stop();
    read(SILENT);
    EXPECT_TRUE(happened(joined(
        {{request()}, times(4, joined({fetched(6 * GetParam().size), paused()})), STREAM_POLL})));
}

TEST_P(ContinuousPause, does_not_count_time_outs)
{
    pass_request();
    send_blocks(4);
    idle(2 * 301);
    send_blocks(7);
    stop();
    read(SILENT);
    EXPECT_TRUE(happened(joined({{request()},
                                 blocks(4),
                                 times(2, STREAM_TIMEOUT),
                                 blocks(5),
                                 tenth_block(),
                                 blocks(1),
                                 STREAM_POLL})));
}

TEST_P(ContinuousPause, counts_from_anew_in_each_call)
{
    for (int call = 0; call < 2; ++call) {
        begin_again();
        pass_request();
        send_blocks(6);
        stop();
        read(SILENT);
        EXPECT_TRUE(happened(joined({{request()}, blocks(6), STREAM_POLL}))) << call;
    }
}

TEST_P(ContinuousPause, is_the_same_in_every_format)
{
    for (const int format : {HEX, TEXT, CSV, SILENT}) {
        begin_again();
        pass_request();
        send_blocks(10);
        stop();
        read(format);
        EXPECT_EQ(slept_us, GetParam().pauses ? 260'000U : 0U) << format;
    }
}
