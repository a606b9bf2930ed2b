// Goal: what happens to a board at a time happens at that very time, neither before nor after.
#include "tests/simulator/stream_wire.hpp"

namespace simulator
{

namespace
{

constexpr uint8_t APPLICATION = 2;
constexpr uint8_t BOOT_LOADER = 1;

class TimedFaults : public StreamWire
{
  protected:
    void power_on_with_words(std::initializer_list<const char *> faults)
    {
        Behaviour behaviour;
        std::string reason;
        for (const char *words : faults) {
            const std::optional<Fault> fault = parse_fault(words, reason);
            ASSERT_TRUE(fault) << reason;
            behaviour.faults.push_back(*fault);
        }
        now = nanoseconds(0);
        power_on({}, behaviour);
    }

    uint8_t mode_asked_for()
    {
        send({0x23, 0, 0, 0, 0, 0, 0, 0xAA});
        return poll_data();
    }
};

TEST_F(TimedFaults, restart_is_there_at_its_time_and_not_a_nanosecond_before)
{
    power_on_with_words({"restart@t=2.5s=boot-loader"});
    pass(nanoseconds(2'499'999'999));
    EXPECT_EQ(mode_asked_for(), APPLICATION);
    pass(nanoseconds(1));
    EXPECT_EQ(mode_asked_for(), BOOT_LOADER);
    send({0x83});
    pass(seconds(100));
    EXPECT_EQ(mode_asked_for(), APPLICATION) << "it happens once";
}

TEST_F(TimedFaults, restarts_come_in_the_order_of_their_times)
{
    power_on_with_words({"restart@t=3s=application", "restart@t=2000ms=boot-loader"});
    pass(seconds(2));
    EXPECT_EQ(mode_asked_for(), BOOT_LOADER);
    pass(seconds(1));
    EXPECT_EQ(mode_asked_for(), APPLICATION);
    power_on_with_words({"restart@t=3s=application", "restart@t=2000ms=boot-loader"});
    pass(seconds(9));
    EXPECT_EQ(mode_asked_for(), APPLICATION) << "nobody asked in between";
}

TEST_F(TimedFaults, restart_numbers_samples_from_1_again)
{
    power_on_with_words({"restart@t=100ms=application"});
    begin_stream(BASE);
    pass(milliseconds(10));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(1, 10));
    pass(milliseconds(95));
    begin_stream(BASE);
    pass(milliseconds(3));
    EXPECT_EQ(times_of(read_stream(BASE), BASE), run_from(1, 3));
    EXPECT_EQ(note(), "block 1: 3 records");
}

TEST_F(TimedFaults, restart_begins_with_the_first_converter_values_again)
{
    power_on_with_words({"restart@t=1s=application"});
    const auto read_values = [this] {
        send(frame(0xC4));
        EXPECT_EQ(wait(), 1);
        send({0, 0});
        return fetch(1203);
    };
    const Bytes first = read_values();
    EXPECT_EQ(first[0], 200);
    EXPECT_NE(read_values(), first);
    pass(seconds(1));
    EXPECT_EQ(read_values(), first);
}

TEST_F(TimedFaults, restart_forgets_what_it_owed)
{
    const std::vector<std::pair<Bytes, Bytes>> debts = {
        {{0x23, 0, 0, 0, 0, 0, 0, 0xAA}, {0x44}}, // an answer
        {{0x81}, {0x33}},                         // a status
        {{0xA0, 0, 0, 0, 0, 0, 0, 0xAA}, {0x44}}, // the result of a command
        {frame(BASE.code, 5), {0x44}},            // records
        {frame(BASE.code, 5), Bytes(20, 0x44)}};  // a stream
    for (const auto &[request, poll] : debts) {
        power_on_with_words({"restart@t=1s=application"});
        send(request);
        pass(seconds(1));
        EXPECT_EQ(exchange(poll), Bytes(poll.size(), 0));
        EXPECT_TRUE(note() == "nothing to answer" || note() == "nothing to acknowledge") << note();
    }
}

TEST_F(TimedFaults, restart_ends_a_delivery_and_a_download)
{
    power_on_with_words({"restart@t=10ms=application"});
    begin_stream(BASE);
    pass(milliseconds(5));
    request(BASE);
    EXPECT_EQ(poll_stream()[0], 0x55);
    pass(milliseconds(5));
    EXPECT_EQ(fetch(5 * 56 - 17), Bytes(5 * 56 - 17, 0));
    EXPECT_EQ(note(), "synchronised") << "it is no fetch any more";

    power_on_with_words({"restart@t=10ms=boot-loader"});
    EXPECT_EQ(status_of({0x81}), 0x55);
    pass(milliseconds(10));
    EXPECT_EQ(status_of(image_frame(0x08004000, 1024, {})), 0) << "no header is expected any more";
}

TEST_F(TimedFaults, silence_covers_its_first_moment_and_not_its_last)
{
    power_on_with_words({"silence@t=2s..4s", "silence@t=6s..7s"});
    struct Moment {
        int64_t nanoseconds;
        uint8_t mode; // 0 where it is silent
    };
    for (const Moment &moment :
         {Moment{1'999'999'999, 2}, Moment{2'000'000'000, 0}, Moment{3'999'999'999, 0},
          Moment{4'000'000'000, 2}, Moment{5'999'999'999, 2}, Moment{6'000'000'000, 0},
          Moment{6'999'999'999, 0}, Moment{7'000'000'000, 2}}) {
        now = nanoseconds(moment.nanoseconds);
        EXPECT_EQ(mode_asked_for(), moment.mode) << moment.nanoseconds;
        EXPECT_EQ(note(), moment.mode == 0 ? "fault: silent" : "answer");
    }
}

TEST_F(TimedFaults, what_is_sent_into_a_silence_is_not_heard)
{
    power_on_with_words({"silence@t=2s..4s"});
    send({0x23, 0, 0, 0, 0, 0, 0, 0xAA});
    pass(seconds(2));
    send({0x81});
    send({0x91});
    pass(seconds(2));
    EXPECT_EQ(poll_data(), APPLICATION) << "the answer that it owed before";
    EXPECT_EQ(mode_asked_for(), APPLICATION);
}

TEST_F(TimedFaults, silent_board_measures_on_until_its_buffer_is_full)
{
    power_on_with_words({"silence@t=5ms..305ms"});
    begin_stream(TEMPERATURE);
    pass(milliseconds(100));
    EXPECT_EQ(poll_stream(), Bytes(20, 0));
    pass(milliseconds(205));
    for (const uint32_t first : {1U, 86U, 171U}) {
        EXPECT_EQ(times_of(read_stream(TEMPERATURE), TEMPERATURE), run_from(first, 85));
    }
    pass(milliseconds(1));
    EXPECT_EQ(times_of(read_stream(TEMPERATURE), TEMPERATURE), run_from(306, 1));
}

} // namespace

} // namespace simulator
