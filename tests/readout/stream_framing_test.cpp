// Goal: every user of the live stream asks for its records, polls for a header, and finds length
// and data wherever 0x55 stands in it, as the co-processor sends them.
#include "tests/readout/stream_fixture.hpp"

#include <cstring>

namespace
{

using StreamRequest = StreamDialogue;
using StreamHeader = StreamDialogue;

// A whole buffer: behind the given bytes it is zero.
Bytes filled_up(const Bytes &bytes)
{
    Bytes all = bytes;
    all.resize(4096, 0x00);
    return all;
}

} // namespace

INSTANTIATE_FOR_ALL_USERS(StreamRequest);
INSTANTIATE_FOR_ALL_USERS(StreamHeader);

TEST_P(StreamRequest, is_sent_before_the_first_poll_and_keeps_five_earlier_bytes)
{
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()}, STREAM_POLL})));
    EXPECT_TRUE(texts.empty());
    EXPECT_STREQ(stm_link.message, LAST_REPORT);
}

TEST_P(StreamRequest, uses_eight_bytes_of_the_short_buffers)
{
    pass_request();
    stop();
    run();
    EXPECT_EQ(bytes_in(stm_link.tx_short),
              Bytes({GetParam().command, GetParam().second, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xAA,
                     0xB8, 0xB9, 0xBA, 0xBB, 0xBC}));
    EXPECT_EQ(bytes_in(stm_link.rx_short), chained({bytes_of(8, 0x55), {0xD8, 0xD9}}));
}

TEST_P(StreamRequest, leaves_the_long_buffers_alone_until_the_wait_clears_them)
{
    keep_buffers();
    pass_request();
    stop();
    run();
    ASSERT_EQ(sent_from.size(), 2U);
    EXPECT_EQ(sent_from[0], bytes_of(4096, STALE_TX));
    EXPECT_EQ(received_into[0], bytes_of(4096, STALE_RX));
    EXPECT_EQ(sent_from[1], chained({bytes_of(20, 0x44), bytes_of(4076, 0x00)}));
    EXPECT_EQ(received_into[1], bytes_of(4096, 0x00));
}

TEST_P(StreamRequest, goes_out_again_before_the_records_are_looked_at)
{
    const Bytes bad = spoiled(good_records(1), 20);
    pass_request();
    send_block(3, bad);
    stop();
    run();
    EXPECT_TRUE(happened(joined({{request()},
                                 fetched(3, GetParam().size),
                                 {wrong_stream_checksum(bad, GetParam().size)},
                                 paused(),
                                 STREAM_POLL})));
}

TEST_P(StreamRequest, exchanges_that_return_0_have_not_failed)
{
    exchange_result = 0;
    for (const size_t index : {4U, 18U, 19U}) {
        begin_again();
        pass_request();
        send_block(index, good_records(2));
        stop();
        run();
        EXPECT_TRUE(happened(
            joined({{request()}, fetched(index, 2 * GetParam().size), paused(), STREAM_POLL})))
            << index;
    }
}

TEST_P(StreamHeader, is_polled_for_until_0x55_is_in_it)
{
    for (const int other : {0x00, 0x54, 0x56, 0x44, 0xAA, 0xD5, 0xFF}) {
        begin_again();
        pass_request();
        idle(3);
        answer(2, bytes_of(20, static_cast<uint8_t>(other)));
        send_block(4, good_records(1));
        stop();
        run();
        EXPECT_TRUE(happened(joined({{request()},
                                     times(3, STREAM_POLL),
                                     fetched(4, GetParam().size),
                                     paused(),
                                     STREAM_POLL})))
            << other;
    }
}

TEST_P(StreamHeader, is_received_over_the_one_before)
{
    keep_buffers();
    pass_request();
    idle(2);
    stop();
    run();
    ASSERT_EQ(received_into.size(), 4U);
    for (const size_t poll : {2U, 3U}) {
        EXPECT_EQ(received_into[poll],
                  filled_up({0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9,
                             0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xCF, 0xD0, 0xD1, 0xD2, 0xD3}));
        EXPECT_EQ(sent_from[poll], chained({bytes_of(20, 0x44), bytes_of(4076, 0x00)}));
    }
    EXPECT_EQ(places, std::vector<ptrdiff_t>({SHORT, 0, 0, 0}));
}

TEST_P(StreamHeader, is_fetched_with_20_bytes_filled_before_each_poll)
{
    watch = [](const spi_ioc_transfer &) { memset(stm_link.tx_buffer, 0x77, 4096); };
    pass_request();
    idle(2);
    stop();
    run();
    EXPECT_EQ(bytes_in(stm_link.tx_buffer), bytes_of(4096, 0x77));
    EXPECT_TRUE(happened(joined({{request()}, times(3, STREAM_POLL)})));
}

TEST_P(StreamHeader, may_begin_at_any_of_its_20_bytes)
{
    for (size_t index = 0; index < 20; ++index) {
        for (const int count : {1, 2, GetParam().most - 1, GetParam().most + 0}) {
            const Bytes data = good_records(count);
            begin_again();
            keep_buffers();
            pass_request();
            send_block(index, data);
            stop();
            run();
            EXPECT_TRUE(
                happened(joined({{request()}, fetched(index, data.size()), paused(), STREAM_POLL})))
                << index << ", " << count << " records";
            const Bytes &at_request = received_into.at(received_into.size() - 2);
            EXPECT_EQ(at_request, filled_up(data)) << index << ", " << count << " records";
        }
    }
}

TEST_P(StreamHeader, data_is_received_behind_what_came_with_it)
{
    for (size_t index = 0; index < 20; ++index) {
        begin_again();
        keep_buffers();
        pass_request();
        send_block(index, good_records(1));
        stop();
        run();
        const size_t data_exchange = index < 18 ? 2 : 3;
        EXPECT_EQ(places.at(data_exchange), static_cast<ptrdiff_t>(held(index))) << index;
        EXPECT_EQ(sent_from.at(data_exchange), bytes_of(4096, 0x66)) << index;
    }
}

TEST_P(StreamHeader, completes_a_length_at_the_start_of_the_buffers)
{
    for (const size_t index : {18U, 19U}) {
        begin_again();
        keep_buffers();
        pass_request();
        send_block(index, good_records(1));
        stop();
        run();
        const size_t sent = index == 18 ? 1 : 2;
        EXPECT_EQ(places.at(2), 0);
        EXPECT_EQ(sent_from.at(2),
                  chained({bytes_of(sent, 0x00), bytes_of(20 - sent, 0x44), bytes_of(4076, 0x00)}));
    }
}

TEST_P(StreamHeader, first_0x55_of_several_counts)
{
    Bytes data = good_records(1);
    data[2] = 0x55;
    data[3] = 0x55;
    seal(data);
    for (const size_t index : {0U, 9U, 15U}) {
        begin_again();
        pass_request();
        send_block(index, data);
        stop();
        run();
        EXPECT_TRUE(
            happened(joined({{request()}, fetched(index, data.size()), paused(), STREAM_POLL})))
            << index;
    }
}

TEST_P(StreamHeader, length_has_its_high_byte_first)
{
    for (const size_t index : {5U, 17U, 18U, 19U}) {
        for (const size_t length : {size_t{0x0112}, size_t{0x0201}, size_t{0x0F55}}) {
            begin_again();
            pass_request();
            send_block(index, length, good_records(1));
            stop();
            run();
            EXPECT_TRUE(
                happened(joined({{request()}, fetched(index, length), paused(), STREAM_POLL})))
                << index << ", " << length;
        }
    }
}

namespace
{

struct StaleHeader {
    size_t index;
    Bytes received; // when the rest is fetched: data so far, and what stays of the header behind it
};

// The data is 55 01 02 .. 10, and 99, which is fetched with the rest.
const StaleHeader STALE_HEADERS[] = {
    {0, {0x55, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09,
         0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x0E, 0x0F, 0x10}},
    {1, {0x55, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09,
         0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x0C, 0x0D, 0x0E, 0x0F}},
    {12, {0x55, 0x01, 0x02, 0x03, 0x04, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9,
          0xCA, 0xCB, 0x55, 0x00, 0x06, 0x55, 0x01, 0x02, 0x03, 0x04}},
    {16, {0x55, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9,
          0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xCF, 0x55, 0x00, 0x02, 0x55}},
    {17, {0xC0, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9,
          0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xCF, 0xD0, 0x55, 0x00, 0x01}},
    {18, {0x01, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9,
          0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xCF, 0xD0, 0xD1, 0x55, 0x00}},
    {19, {0x00, 0x01, 0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9,
          0xCA, 0xCB, 0xCC, 0xCD, 0xCE, 0xCF, 0xD0, 0xD1, 0xD2, 0x55}},
};

} // namespace

TEST_P(StreamHeader, stays_behind_the_data_until_data_covers_it)
{
    const Bytes data = {0x55, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08,
                        0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10};
    for (const StaleHeader &stale : STALE_HEADERS) {
        const size_t here = held(stale.index);
        begin_again();
        keep_buffers();
        pass_request();
        Bytes block = data;
        block.resize(here);
        block.push_back(0x99);
        send_block(stale.index, block);
        stop();
        run();
        const size_t fetch = stale.index < 18 ? 2 : 3;
        Bytes expected = filled_up(stale.received);
        EXPECT_EQ(received_into.at(fetch), expected) << stale.index;
        expected[here] = 0x99;
        EXPECT_EQ(received_into.at(fetch + 1), expected) << stale.index;
        EXPECT_TRUE(happened(joined({{request()},
                                     fetched(stale.index, here + 1),
                                     {wrong_stream_checksum(expected, GetParam().size)},
                                     paused(),
                                     STREAM_POLL})))
            << stale.index;
    }
}
