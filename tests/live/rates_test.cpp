// Goal: the rates of docs/streaming.md hold. At the highest rate of an operation no record is lost,
// and one part in a hundred above it some are. Time is counted: the answer is the same on every
// machine.
#include "link/link.hpp"
#include "link/stm_com_funcs.h"
#include "tests/live/live_board.hpp"

#include <gtest/gtest.h>

#include <charconv>
#include <string_view>

using namespace stm;

namespace
{

constexpr std::chrono::seconds DURATION(20);

struct Seen {
    int64_t records = 0;
    int64_t lost = 0;
    uint32_t last_time = 0;
};
Seen seen;
int time_column = 0;       // of the CSV lines that are counted
RingBuffer ring_segment;   // of the writer
int32_t ring_position = 0; // up to which its slots are counted

void see(uint32_t time)
{
    ++seen.records;
    seen.lost += time - seen.last_time - 1;
    seen.last_time = time;
}

int stop_in_time(char *line)
{
    line[0] = 's';
    line[1] = '\n';
    line[2] = '\0';
    return LiveBoard::running().elapsed() > DURATION ? 1 : 0;
}

int count_csv_line(const char *text, int more)
{
    std::string_view line(text);
    EXPECT_EQ(more, 1) << text;
    for (int column = 0; column < time_column; ++column) {
        line.remove_prefix(line.find(';') + 1);
    }
    uint32_t time = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), time);
    if (error == std::errc() && *end == ';') { // the header has no number there
        see(time);
    }
    return 0;
}

int expect_nothing(const char *text, int)
{
    ADD_FAILURE() << text;
    return 0;
}

// Counts what the writer has put since the last poll, and polls.
int count_slots(char *line)
{
    for (; ring_position != ring_segment.write_index; ring_position = (ring_position + 1) % 160) {
        see(static_cast<uint32_t>(ring_segment.slots[ring_position].rel_t));
    }
    return stop_in_time(line);
}

// The watcher's own reports, in which a gap is its difference less one.
int count_report(const char *text, int)
{
    constexpr std::string_view DIFFERENCE = "difference   : ";
    std::string_view line(text);
    if (line.starts_with(DIFFERENCE)) {
        line.remove_prefix(DIFFERENCE.size());
        int64_t difference = 0;
        std::from_chars(line.data(), line.data() + line.size(), difference);
        seen.lost += difference - 1;
    }
    return 0;
}

struct Live {
    const char *name;
    int highest_rate;
    void (*run)();
};

void read_csv(void (*operation)(int, StmPollFn, StmOutputFn), int column)
{
    time_column = column;
    operation(READOUT_CSV, stop_in_time, count_csv_line);
}

void write_ring()
{
    ring_segment = {};
    ring_position = 0;
    stm_link.ring = &ring_segment;
    stm_ringbuffer_acquire(count_slots, expect_nothing);
}

void watch()
{
    testing::internal::CaptureStderr();
    stm_stream_readout(stop_in_time, count_report);
    seen.records = std::ssize(testing::internal::GetCapturedStderr()) * 1000; // a dot for each
}

constexpr Live LIVE[] = {
    {"base", 13356, [] { read_csv(stm_continuous_readout, 1); }},
    {"omega", 14384, [] { read_csv(stm_continuous_readout_omega, 2); }},
    {"temp", 2702, [] { read_csv(stm_continuous_readout_temp, 2); }},
    {"writer", 15582, write_ring},
    {"watcher", 2945, watch},
};

class Rate : public testing::TestWithParam<Live>
{
  protected:
    static void run_at(int rate)
    {
        simulator::Behaviour behaviour;
        behaviour.rate = rate;
        LiveBoard board(behaviour);
        seen = {};
        GetParam().run();
    }
};

} // namespace

TEST_P(Rate, the_highest_one_loses_nothing)
{
    run_at(GetParam().highest_rate);
    EXPECT_EQ(seen.lost, 0);
    EXPECT_GT(seen.records, int64_t{GetParam().highest_rate} * DURATION.count() - 2000);
}

TEST_P(Rate, a_hundredth_more_loses_records)
{
    run_at(GetParam().highest_rate + GetParam().highest_rate / 100);
    EXPECT_GT(seen.lost, 0);
    EXPECT_GT(seen.records, int64_t{GetParam().highest_rate} * DURATION.count() - 2000);
}

INSTANTIATE_TEST_SUITE_P(Live, Rate, testing::ValuesIn(LIVE),
                         [](const auto &row) { return row.param.name; });
