// Goal: a board that measures by itself does so at its rate, from the first poll of a stream until
// something ends it, and loses what its buffer cannot hold.
#include "tests/simulator/stream_wire.hpp"

namespace simulator
{

namespace
{

class LiveMeasuring : public StreamWire
{
};

TEST_F(LiveMeasuring, loses_what_it_measures_while_its_buffer_is_full)
{
    begin_stream(TEMPERATURE);
    pass(milliseconds(300));
    const Bytes first = read_stream(TEMPERATURE);
    EXPECT_EQ(times_of(first, TEMPERATURE), run_from(1, 85));
    EXPECT_EQ(buffered_of(records_of(first, TEMPERATURE)[0]), 254);
    pass(milliseconds(4));
    EXPECT_EQ(times_of(read_stream(TEMPERATURE), TEMPERATURE), run_from(86, 85));
    EXPECT_EQ(times_of(read_stream(TEMPERATURE), TEMPERATURE), run_from(171, 85));
    const Bytes behind = read_stream(TEMPERATURE);
    EXPECT_EQ(times_of(behind, TEMPERATURE), run_from(301, 4));
    EXPECT_EQ(behind[1], 301 - 255) << "numbers are used up, too";
}

TEST_F(LiveMeasuring, keeps_255_records_and_no_more)
{
    for (const auto &[measured, next] : {std::pair(255, 256U), {256, 257U}}) {
        power_on({}, {});
        begin_stream(TEMPERATURE);
        pass(milliseconds(measured));
        for (const uint32_t first : {1U, 86U, 171U}) {
            EXPECT_EQ(times_of(read_stream(TEMPERATURE), TEMPERATURE), run_from(first, 85));
        }
        pass(milliseconds(1));
        EXPECT_EQ(times_of(read_stream(TEMPERATURE), TEMPERATURE), run_from(next, 1));
    }
}

TEST_F(LiveMeasuring, measures_at_its_rate_to_the_nanosecond)
{
    struct Rate {
        int rate;
        int record;
        int64_t nanoseconds; // when it is there
    };
    for (const Rate &rate :
         {Rate{1, 1, 1'000'000'000}, Rate{1, 3, 3'000'000'000}, Rate{7, 1, 142'857'143},
          Rate{7, 6, 857'142'858}, Rate{7, 15, 2'142'857'143}, Rate{1000, 50, 50'000'000},
          Rate{1'000'000, 1, 1000}, Rate{1'000'000, 50, 50'000}}) {
        power_on({}, {0, {}, 1, 200, rate.rate});
        pass(seconds(5));
        begin_stream(BASE);
        pass(nanoseconds(rate.nanoseconds - 1));
        const auto before = static_cast<size_t>(rate.record - 1);
        if (before > 0) {
            EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(1, before));
        }
        request(BASE);
        EXPECT_EQ(poll_stream(), Bytes(20, 0)) << rate.rate;
        pass(nanoseconds(1));
        EXPECT_EQ(times_of(read_stream(BASE), BASE),
                  run_from(static_cast<uint32_t>(rate.record), 1))
            << rate.rate;
    }
}

TEST_F(LiveMeasuring, can_go_on_for_years)
{
    power_on({}, {0, {}, 1, 200, 1'000'000});
    begin_stream(BASE);
    pass(std::chrono::hours(1)); // 3600 million samples
    for (int i = 0; i < 4; ++i) {
        read_stream(BASE);
    }
    pass(microseconds(2));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(3'600'000'001U, 2));
    pass(std::chrono::hours(30'000));
    EXPECT_EQ(records_of(read_stream(BASE), BASE).size(), 73U);
}

TEST_F(LiveMeasuring, begins_to_measure_with_the_first_poll)
{
    pass(seconds(1));
    request(BASE);
    pass(seconds(1));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    pass(milliseconds(2));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(1, 2));
}

TEST_F(LiveMeasuring, goes_on_between_requests_and_other_commands)
{
    begin_stream(BASE);
    pass(milliseconds(2));
    EXPECT_EQ(read_stream(BASE).size(), 112U);
    pass(milliseconds(3));
    send(frame(0xA0));
    EXPECT_EQ(wait(), 1);
    send(frame(0xC4));
    EXPECT_EQ(wait(), 1);
    pass(milliseconds(4));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(3, 7));
}

TEST_F(LiveMeasuring, begins_anew_where_the_link_is_synchronised)
{
    begin_stream(BASE);
    pass(milliseconds(5));
    send(Bytes(4096, 0x66));
    EXPECT_EQ(note(), "synchronised");
    pass(milliseconds(5));
    begin_stream(BASE);
    pass(milliseconds(2));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(6, 2));
}

TEST_F(LiveMeasuring, begins_anew_with_another_kind_of_record)
{
    begin_stream(BASE);
    pass(milliseconds(5));
    begin_stream(OMEGA);
    pass(milliseconds(2));
    EXPECT_EQ(times_of(read_stream(OMEGA), OMEGA), run_from(6, 2));
}

TEST_F(LiveMeasuring, ends_with_a_counted_read_out)
{
    begin_stream(BASE);
    pass(milliseconds(5));
    EXPECT_EQ(times_of(read_block(BASE, 3), BASE), run_from(6, 3));
    pass(milliseconds(5));
    begin_stream(BASE);
    pass(milliseconds(1));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(9, 1));
}

TEST_F(LiveMeasuring, ends_with_the_application)
{
    for (const Bytes &command : {Bytes{0x81, 0, 0, 0, 0, 0, 0, 0xAA}, Bytes{0x81}, Bytes{0x83}}) {
        power_on({}, {});
        begin_stream(BASE);
        pass(milliseconds(5));
        send(command);
        pass(milliseconds(5));
        send({0x83});
        begin_stream(BASE);
        pass(milliseconds(1));
        EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(6, 1));
    }
}

} // namespace

} // namespace simulator
