// Goal: a failing exchange ends the live stream on the spot, in the words of its user and its step:
// nothing is looked at, polled or paused for after it.
#include "tests/readout/stream_fixture.hpp"

#include <cerrno>

namespace
{

class FailingStream : public StreamDialogue
{
  protected:
    static constexpr char FIRST_REQUEST[] = "perror \"SPI datatransfer\" ";
    static constexpr char FAILING_POLL[] = "exchange 20: 44*20";
};

} // namespace

INSTANTIATE_FOR_ALL_USERS(FailingStream);

TEST_P(FailingStream, at_the_first_request_polls_nothing)
{
    fail_next(EIO);
    head(0, GetParam().size, good_records(1));
    run();
    EXPECT_TRUE(happened(joined({{request()}, failure(FIRST_REQUEST)})));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, STALE_TX));
}

TEST_P(FailingStream, tells_the_reason_of_the_system)
{
    fail_next(ESHUTDOWN);
    run();
    EXPECT_TRUE(happened(joined({{request()}, failure(FIRST_REQUEST, "ESHUTDOWN")})));
}

TEST_P(FailingStream, at_the_first_poll_does_not_poll_the_input)
{
    pass_request();
    fail_next(EIO);
    type_line(1, "s\n");
    run();
    EXPECT_TRUE(happened(joined({{request()}, {FAILING_POLL}, failure(GetParam().poll_failure)})));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}

TEST_P(FailingStream, at_a_poll_is_not_looked_at_for_a_header)
{
    pass_request();
    idle(1);
    fail_next(EIO);
    watch = [](const spi_ioc_transfer &) { stm_link.rx_buffer[4] = 0x55; };
    answer(2, bytes_of(20, 0x01));
    run();
    EXPECT_TRUE(happened(
        joined({{request()}, STREAM_POLL, {FAILING_POLL}, failure(GetParam().poll_failure)})));
}

TEST_P(FailingStream, at_the_301st_poll_is_no_time_out)
{
    pass_request();
    idle(300);
    fail_next(EIO);
    run();
    EXPECT_TRUE(happened(joined(
        {{request()}, times(300, STREAM_POLL), {FAILING_POLL}, failure(GetParam().poll_failure)})));
    EXPECT_TRUE(texts.empty());
}

TEST_P(FailingStream, at_a_poll_after_a_time_out_ends_it_too)
{
    pass_request();
    idle(301);
    fail_next(EIO);
    run();
    EXPECT_TRUE(happened(
        joined({{request()}, STREAM_TIMEOUT, {FAILING_POLL}, failure(GetParam().poll_failure)})));
}

TEST_P(FailingStream, at_two_bytes_of_the_length_fetches_no_data)
{
    pass_request();
    head(19, GetParam().size, {});
    fail_next(EIO);
    run();
    EXPECT_TRUE(happened(joined(
        {{request()}, STREAM_POLL, {"exchange 2: 00 00"}, failure(GetParam().two_bytes_failure)})));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}

TEST_P(FailingStream, at_one_byte_of_the_length_fetches_no_data)
{
    pass_request();
    head(18, GetParam().size, {});
    fail_next(EIO);
    run();
    EXPECT_TRUE(happened(joined(
        {{request()}, STREAM_POLL, {"exchange 1: 00"}, failure(GetParam().one_byte_failure)})));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}

TEST_P(FailingStream, at_the_data_asks_for_no_other_block)
{
    for (const size_t index : {0U, 10U, 17U, 18U, 19U}) {
        const size_t fetched_size = GetParam().size - held(index);
        begin_again();
        pass_request();
        head(index, GetParam().size, good_records(1));
        complete_length(index, GetParam().size);
        fail_next(EIO);
        run();
        EXPECT_TRUE(happened(
            joined({{request()},
                    STREAM_POLL,
                    completion(index),
                    {rest(fetched_size)},
                    sized_failure(GetParam().data_failure, static_cast<int>(fetched_size))})))
            << index;
        EXPECT_STREQ(stm_link.message, LAST_REPORT);
    }
}

TEST_P(FailingStream, at_the_next_request_looks_at_no_record)
{
    for (const size_t index : {0U, 17U, 18U, 19U}) {
        const Bytes bad = spoiled(good_records(1), 30);
        begin_again();
        pass_request();
        head(index, bad.size(), bad);
        complete_length(index, bad.size());
        deliver_rest(index, bad);
        fail_next(EIO);
        run();
        EXPECT_TRUE(happened(joined({{request()},
                                     fetched(index, bad.size()),
                                     sized_failure(GetParam().request_failure, 8)})))
            << index;
        EXPECT_STREQ(stm_link.message, LAST_REPORT);
    }
}

TEST_P(FailingStream, in_the_second_block_has_taken_the_first)
{
    const char *const failures[] = {GetParam().poll_failure, GetParam().two_bytes_failure};
    const Transcript steps[] = {{FAILING_POLL}, joined({STREAM_POLL, {"exchange 2: 00 00"}})};
    for (int step = 0; step < 2; ++step) {
        begin_again();
        pass_request();
        send_block(6, good_records(1));
        head(19, GetParam().size, {});
        fail_exchange(5 + step, EIO);
        run();
        EXPECT_TRUE(happened(joined({{request()},
                                     fetched(6, GetParam().size),
                                     paused(),
                                     steps[step],
                                     failure(failures[step])})))
            << step;
    }
}

TEST_P(FailingStream, can_be_run_again)
{
    pass_request();
    fail_next(EIO);
    run();
    begin_again();
    pass_request();
    send_block(6, good_records(1));
    stop();
    run();
    EXPECT_TRUE(
        happened(joined({{request()}, fetched(6, GetParam().size), paused(), STREAM_POLL})));
}
