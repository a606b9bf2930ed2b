// Goal: any length that is announced ends well for every user of the live stream: what the buffer
// can hold is fetched, and what cannot be is refused as a failing exchange.
#include "tests/readout/stream_fixture.hpp"

#include <cerrno>

namespace
{

class StreamLength : public StreamDialogue
{
  protected:
    // A block of this length is announced, and nothing else scripted behind its header.
    void announce(size_t index, size_t length)
    {
        begin_again();
        pass_request();
        head(index, length, bytes_of(17, 0x00));
        complete_length(index, length);
    }

    // Up to the length.
    static Transcript found(size_t index)
    {
        return joined({{request()}, STREAM_POLL, completion(index)});
    }
};

using EmptyBlock = StreamLength;
using WatchedEmptyBlock = StreamLength;

} // namespace

INSTANTIATE_FOR_ALL_USERS(StreamLength);
INSTANTIATE_TEST_SUITE_P(Each, EmptyBlock, testing::ValuesIn(STREAM_USERS, STREAM_WATCHER),
                         user_name);
INSTANTIATE_TEST_SUITE_P(Only, WatchedEmptyBlock, testing::Values(*STREAM_WATCHER), user_name);

TEST_P(StreamLength, of_the_whole_buffer_is_fetched)
{
    for (size_t index = 0; index < 20; ++index) {
        begin_again();
        pass_request();
        send_block(index, 4096, good_records(GetParam().most));
        stop();
        run();
        EXPECT_TRUE(happened(joined({{request()}, fetched(index, 4096), paused(), STREAM_POLL})))
            << index;
    }
}

TEST_P(StreamLength, beyond_the_buffer_is_refused_without_an_exchange)
{
    for (size_t index = 0; index < 20; ++index) {
        for (const int length : {4097, 4112, 4113, 4114, 32768, 65535}) {
            announce(index, static_cast<size_t>(length));
            run();
            EXPECT_TRUE(happened(joined(
                {found(index), sized_failure(GetParam().data_failure,
                                             length - static_cast<int>(held(index)), "EMSGSIZE")})))
                << index << ", " << length;
            EXPECT_EQ(slept_us, 0U);
        }
    }
}

TEST_P(StreamLength, refusal_has_filled_the_transmit_buffer_and_left_what_was_received)
{
    announce(10, 5000);
    run();
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x66));
    EXPECT_EQ(bytes_in(stm_link.rx_buffer), chained({bytes_of(7, 0x00),
                                                     {0xC7, 0xC8, 0xC9, 0x55, 0x13, 0x88},
                                                     bytes_of(4096 - 13, 0x00)}));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}

TEST_P(StreamLength, that_has_come_with_the_header_takes_an_exchange_of_no_bytes)
{
    for (size_t index = 0; index < 17; ++index) {
        const Bytes data = bytes_of(held(index), 0x00);
        begin_again();
        keep_buffers();
        pass_request();
        send_block(index, data);
        stop();
        run();
        EXPECT_EQ(places.at(2), static_cast<ptrdiff_t>(held(index)));
        EXPECT_TRUE(happened(joined({{request()},
                                     STREAM_POLL,
                                     {"exchange 0:", request()},
                                     {wrong_stream_checksum(received_into.at(2), GetParam().size)},
                                     paused(),
                                     STREAM_POLL})))
            << index;
    }
}

TEST_P(StreamLength, below_what_has_come_with_the_header_is_refused)
{
    for (size_t index = 0; index < 16; ++index) {
        for (int length = 1; length < static_cast<int>(held(index)); ++length) {
            announce(index, static_cast<size_t>(length));
            run();
            EXPECT_TRUE(happened(joined(
                {found(index), sized_failure(GetParam().data_failure,
                                             length - static_cast<int>(held(index)), "EMSGSIZE")})))
                << index << ", " << length;
        }
    }
}

TEST_P(StreamLength, one_too_short_is_refused_with_a_size_of_minus_1)
{
    announce(0, 16);
    run();
    EXPECT_TRUE(
        happened(joined({found(0), sized_failure(GetParam().data_failure, -1, "EMSGSIZE")})));
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}

TEST_P(EmptyBlock, is_refused_behind_data)
{
    for (size_t index = 0; index < 17; ++index) {
        announce(index, 0);
        run();
        EXPECT_TRUE(happened(joined({found(index), failure(GetParam().data_failure, "EMSGSIZE")})))
            << index;
    }
}

// What is left of the header is then looked at as a record.
TEST_P(EmptyBlock, without_data_is_a_block)
{
    for (const size_t index : {17U, 18U, 19U}) {
        begin_again();
        keep_buffers();
        pass_request();
        send_block(index, Bytes());
        stop();
        run();
        const Bytes &seen = received_into.at(index == 17 ? 3 : 4);
        EXPECT_TRUE(happened(joined({found(index),
                                     {"exchange 0:", request()},
                                     {wrong_stream_checksum(seen, GetParam().size)},
                                     paused(),
                                     STREAM_POLL})))
            << index;
    }
}

TEST_P(WatchedEmptyBlock, is_told_and_asked_behind_at_once)
{
    for (size_t index = 0; index < 20; ++index) {
        announce(index, 0);
        pass_request();
        send_block(2, good_records(1));
        stop();
        run();
        EXPECT_TRUE(happened(joined({found(index),
                                     {remark("No data available\n"), request()},
                                     fetched(2, 48),
                                     {"sleep 20000"},
                                     STREAM_POLL})))
            << index;
        EXPECT_STREQ(stm_link.message, LAST_REPORT);
    }
}

TEST_P(WatchedEmptyBlock, several_in_a_row_are_each_told_and_followed_by_cleared_buffers)
{
    keep_buffers();
    pass_request();
    for (int i = 0; i < 3; ++i) {
        head(7, 0, bytes_of(10, 0xEE));
        pass_request();
    }
    stop();
    run();
    const Transcript empty = joined({STREAM_POLL, {remark("No data available\n"), request()}});
    EXPECT_TRUE(happened(joined({{request()}, times(3, empty), STREAM_POLL})));
    for (const size_t poll : {3U, 5U, 7U}) {
        EXPECT_EQ(received_into.at(poll), bytes_of(4096, 0x00));
        EXPECT_EQ(sent_from.at(poll), chained({bytes_of(20, 0x44), bytes_of(4076, 0x00)}));
    }
}

TEST_P(WatchedEmptyBlock, failing_request_behind_it_ends_the_watch_without_a_size)
{
    announce(19, 0);
    fail_next(EIO);
    run();
    EXPECT_TRUE(happened(joined({found(19),
                                 {remark("No data available\n"), request()},
                                 {R"(perror "SPI datatransfer" EIO)"}})));
}
