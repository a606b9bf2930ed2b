// Goal: the wait for a header has 300 chances, is told when they are gone and begins anew without
// end; the stop line ends it in any poll, and with it the operation.
#include "tests/readout/stream_fixture.hpp"

namespace
{

using StreamTimeout = StreamDialogue;
using StoppedStream = StreamDialogue;

} // namespace

INSTANTIATE_FOR_ALL_USERS(StreamTimeout);
INSTANTIATE_FOR_ALL_USERS(StoppedStream);

TEST_P(StreamTimeout, does_not_come_before_a_header_in_the_300th_poll)
{
    for (const size_t index : {0U, 11U, 18U, 19U}) {
        begin_again();
        pass_request();
        idle(299);
        send_block(index, good_records(1));
        stop();
        run();
        EXPECT_TRUE(happened(joined({{request()},
                                     times(299, STREAM_POLL),
                                     fetched(index, GetParam().size),
                                     paused(),
                                     STREAM_POLL})))
            << index;
    }
}

TEST_P(StreamTimeout, comes_before_a_header_in_the_301st_poll)
{
    for (const size_t index : {0U, 11U, 18U, 19U}) {
        begin_again();
        pass_request();
        idle(300);
        head(index, GetParam().size, good_records(1));
        send_block(5, good_records(1));
        stop();
        run();
        EXPECT_TRUE(happened(joined(
            {{request()}, STREAM_TIMEOUT, fetched(5, GetParam().size), paused(), STREAM_POLL})))
            << index;
    }
}

TEST_P(StreamTimeout, is_told_through_the_message)
{
    pass_request();
    idle(301);
    stop();
    run();
    EXPECT_TRUE(same(messages, {R"(say 0 "SPI timeout\n")"}));
    EXPECT_EQ(slept_us, 500'000U);
}

TEST_P(StreamTimeout, is_followed_by_cleared_buffers)
{
    keep_buffers();
    pass_request();
    idle(301);
    stop();
    run();
    ASSERT_EQ(received_into.size(), 303U);
    EXPECT_EQ(received_into[301][19], 0xD3);
    EXPECT_EQ(received_into[302], bytes_of(4096, 0x00));
    EXPECT_EQ(sent_from[302], chained({bytes_of(20, 0x44), bytes_of(4076, 0x00)}));
}

TEST_P(StreamTimeout, clears_both_buffers_to_their_ends_and_polls_do_not)
{
    int clean = 0;
    watch = [&clean](const spi_ioc_transfer &) {
        clean += stm_link.tx_buffer[4095] == 0x00 && stm_link.rx_buffer[4095] == 0x00 ? 1 : 0;
        stm_link.tx_buffer[4095] = 0x77;
        stm_link.rx_buffer[4095] = 0x77;
    };
    pass_request();
    idle(301);
    stop();
    run();
    EXPECT_EQ(clean, 2); // in the first poll, and in the first one after the time-out
}

TEST_P(StreamTimeout, is_followed_by_a_wait_with_all_its_polls)
{
    pass_request();
    idle(301 + 299);
    send_block(8, good_records(1));
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 STREAM_TIMEOUT,
                                 times(299, STREAM_POLL),
                                 fetched(8, GetParam().size),
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(StreamTimeout, comes_as_often_as_the_co_processor_is_late)
{
    pass_request();
    idle(12 * 301 + 5);
    send_block(18, good_records(1));
    stop();
    output_result = -1;
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 times(12, STREAM_TIMEOUT),
                                 times(5, STREAM_POLL),
                                 fetched(18, GetParam().size),
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(StreamTimeout, of_a_later_block_asks_for_nothing_again)
{
    pass_request();
    send_block(19, good_records(1));
    idle(2 * 301);
    send_block(2, good_records(2, 2));
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 fetched(19, GetParam().size),
                                 paused(),
                                 times(2, STREAM_TIMEOUT),
                                 fetched(2, 2 * GetParam().size),
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(StreamTimeout, of_a_later_block_has_all_the_polls_too)
{
    pass_request();
    idle(200);
    send_block(1, good_records(1));
    idle(299);
    send_block(17, good_records(1, 2));
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 times(200, STREAM_POLL),
                                 fetched(1, GetParam().size),
                                 paused(),
                                 times(299, STREAM_POLL),
                                 fetched(17, GetParam().size),
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(StoppedStream, is_not_looked_at_for_a_header)
{
    for (const size_t index : {0U, 18U, 19U}) {
        begin_again();
        pass_request();
        head(index, GetParam().size, good_records(1));
        type_line(1, "s\n");
        run();
        EXPECT_TRUE(happened(joined({{request()}, STREAM_POLL}))) << index;
        EXPECT_STREQ(stm_link.message, LAST_REPORT);
    }
}

TEST_P(StoppedStream, in_the_300th_poll_is_stopped)
{
    pass_request();
    idle(299);
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()}, times(300, STREAM_POLL)})));
}

TEST_P(StoppedStream, in_the_301st_poll_is_no_time_out)
{
    pass_request();
    idle(300);
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()}, times(301, STREAM_POLL)})));
    EXPECT_TRUE(texts.empty());
    EXPECT_EQ(slept_us, 0U);
}

TEST_P(StoppedStream, after_time_outs_waits_for_nothing_more)
{
    pass_request();
    idle(2 * 301);
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()}, times(2, STREAM_TIMEOUT), STREAM_POLL})));
}

// Each poll has its input; block and records have none, however many there are.
TEST_P(StoppedStream, is_asked_about_in_polls_only)
{
    pass_request();
    send_block(18, good_records(GetParam().most));
    send_block(19, good_records(3, GetParam().most + 1));
    send_block(0, good_records(2, GetParam().most + 4));
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 fetched(18, GetParam().most * GetParam().size),
                                 paused(),
                                 fetched(19, 3 * GetParam().size),
                                 paused(),
                                 fetched(0, 2 * GetParam().size),
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(StoppedStream, needs_exactly_the_stop_line)
{
    for (const char *line : {"s", "s\nx", "\n", "", "S\n", "stop\n", " s\n", "s \n", "s\r\n"}) {
        begin_again();
        pass_request();
        idle(1);
        stop();
        type_line(1, line);
        run();
        EXPECT_TRUE(happened(joined({{request()}, times(2, STREAM_POLL)}))) << quoted(line);
    }
}

TEST_P(StoppedStream, needs_a_line_that_the_input_says_is_there)
{
    pass_request();
    idle(1);
    stop();
    type_line(1, "s\n", 0);
    run();
    EXPECT_TRUE(happened(joined({{request()}, times(2, STREAM_POLL)})));
}

TEST_P(StoppedStream, is_stopped_by_any_result_but_0)
{
    for (const int result : {1, -1, 2, 256}) {
        begin_again();
        pass_request();
        type_line(1, "s\n", result);
        run();
        EXPECT_TRUE(happened(joined({{request()}, STREAM_POLL}))) << result;
    }
}
