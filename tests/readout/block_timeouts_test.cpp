// Goal: the wait for a block has 300 chances, is told when they are gone and begins anew without
// end; the stop line ends it in any poll, and ends the read-out with it.
#include "tests/readout/block_fixture.hpp"

namespace
{

constexpr char TIMEOUT_TEXT[] = "SPI timeout\n";

using BlockTimeout = BlockDialogue;
using StoppedReadout = BlockDialogue;

} // namespace

INSTANTIATE_FOR_ALL_OPERATIONS(BlockTimeout);
INSTANTIATE_FOR_ALL_OPERATIONS(StoppedReadout);

TEST_P(BlockTimeout, does_not_come_before_a_block_in_the_300th_poll)
{
    pass_request();
    busy(299);
    ready_with(golden(0).bytes);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)},
                                 times(299, POLL),
                                 block(GetParam().size),
                                 {say(golden(0).text, 1)},
                                 CLOSING})));
}

TEST_P(BlockTimeout, comes_before_a_block_in_the_301st_poll)
{
    pass_request();
    busy(300);
    ready();
    ready_with(golden(0).bytes);
    read(1, TEXT);
    EXPECT_TRUE(happened(joined(
        {{request(1)}, TIMEOUT, block(GetParam().size), {say(golden(0).text, 1)}, CLOSING})));
}

TEST_P(BlockTimeout, is_told_through_the_message_and_waited_out)
{
    pass_request();
    busy(301);
    ready_with(golden(0).bytes);
    read(1, SILENT);
    EXPECT_TRUE(same(messages, Transcript({say(TIMEOUT_TEXT, 0)})));
    EXPECT_EQ(stm_link.message, std::string(TIMEOUT_TEXT));
    EXPECT_EQ(slept_us, 500'000U);
}

TEST_P(BlockTimeout, is_followed_by_a_wait_with_all_its_polls)
{
    pass_request();
    busy(301 + 299);
    ready_with(golden(0).bytes);
    read(1, SILENT);
    EXPECT_TRUE(happened(
        joined({{request(1)}, TIMEOUT, times(299, POLL), block(GetParam().size), CLOSING})));
}

TEST_P(BlockTimeout, comes_as_often_as_the_co_processor_is_late)
{
    pass_request();
    busy(12 * 301 + 5);
    ready_with(golden(0).bytes);
    output_result = -1;
    read(1, SILENT);
    EXPECT_TRUE(happened(joined(
        {{request(1)}, times(12, TIMEOUT), times(5, POLL), block(GetParam().size), CLOSING})));
    EXPECT_EQ(slept_us, 6'000'000U);
}

TEST_P(BlockTimeout, of_a_later_block_asks_for_nothing_again)
{
    pass_request();
    ready_with(golden(0).bytes);
    pass_request();
    busy(2 * 301);
    ready_with(golden(1).bytes);
    read(2, TEXT);
    EXPECT_TRUE(happened(joined({{request(2)},
                                 block(GetParam().size),
                                 {request(1), say(golden(0).text, 1)},
                                 TIMEOUT,
                                 TIMEOUT,
                                 block(GetParam().size),
                                 {say(golden(1).text, 1)},
                                 CLOSING})));
}

TEST_P(BlockTimeout, of_a_later_block_has_all_the_polls_too)
{
    pass_request();
    busy(200);
    ready_with(golden(0).bytes);
    pass_request();
    busy(299);
    ready_with(golden(1).bytes);
    read(2, SILENT);
    EXPECT_TRUE(happened(joined({{request(2)},
                                 times(200, POLL),
                                 block(GetParam().size),
                                 {request(1)},
                                 times(299, POLL),
                                 block(GetParam().size),
                                 CLOSING})));
}

TEST_P(StoppedReadout, in_the_first_poll_takes_no_block_and_is_not_closed)
{
    pass_request();
    ready_with(golden(0).bytes);
    type_line(1, "s\n");
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, POLL})));
    EXPECT_EQ(stm_link.message, std::string(LAST_REPORT));
}

TEST_P(StoppedReadout, in_a_later_poll_takes_no_block)
{
    pass_request();
    busy(99);
    ready_with(golden(0).bytes);
    type_line(100, "s\n");
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, times(100, POLL)})));
}

TEST_P(StoppedReadout, in_the_301st_poll_is_no_time_out)
{
    type_line(301, "s\n");
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, times(301, POLL)})));
    EXPECT_EQ(slept_us, 0U);
}

TEST_P(StoppedReadout, after_time_outs_waits_for_nothing_more)
{
    type_line(2 * 301 + 1, "s\n");
    read(1, TEXT);
    EXPECT_TRUE(happened(joined({{request(1)}, TIMEOUT, TIMEOUT, POLL})));
}

TEST_P(StoppedReadout, between_blocks_leaves_a_request_behind)
{
    pass_request();
    ready_with(golden(0).bytes);
    pass_request();
    ready_with(golden(1).bytes);
    type_line(2, "s\n");
    read(2, TEXT);
    EXPECT_TRUE(happened(joined(
        {{request(2)}, block(GetParam().size), {request(1), say(golden(0).text, 1)}, POLL})));
}

TEST_P(StoppedReadout, needs_exactly_the_stop_line)
{
    for (const char *line : {"s", "s\nx", "\n", "", "S\n", "stop\n", " s\n", "s \n", "s\r\n"}) {
        begin_again();
        pass_request();
        busy(1);
        ready_with(golden(0).bytes);
        type_line(1, line);
        read(1, SILENT);
        EXPECT_TRUE(happened(joined({{request(1)}, POLL, block(GetParam().size), CLOSING})))
            << quoted(line);
    }
}

TEST_P(StoppedReadout, needs_a_line_that_the_input_says_is_there)
{
    pass_request();
    busy(1);
    ready_with(golden(0).bytes);
    type_line(1, "s\n", 0);
    read(1, SILENT);
    EXPECT_TRUE(happened(joined({{request(1)}, POLL, block(GetParam().size), CLOSING})));
}

TEST_P(StoppedReadout, is_stopped_by_any_result_but_0)
{
    for (const int result : {1, -1, 2, 256}) {
        begin_again();
        type_line(1, "s\n", result);
        read(1, SILENT);
        EXPECT_TRUE(happened(joined({{request(1)}, POLL}))) << result;
    }
}
