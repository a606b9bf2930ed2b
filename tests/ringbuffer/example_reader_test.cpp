// Goal: examples/ring_reader.c shows each record once as long as it keeps up, and what it shows
// otherwise: it knows the index modulo the ring, and does not notice that the writer came round.
#include "tests/ringbuffer/reader_fixture.hpp"

#include <algorithm>
#include <cstdio>
#include <utility>

extern "C" int ring_reader_main(int argc, char **argv);

namespace
{

using Numbers = std::vector<int>;

std::function<void()> at_checksum;

Numbers from_to(int first, int last)
{
    Numbers numbers;
    for (int number = first; number <= last; ++number) {
        numbers.push_back(number);
    }
    return numbers;
}

Numbers operator+(Numbers numbers, const Numbers &others)
{
    numbers.insert(numbers.end(), others.begin(), others.end());
    return numbers;
}

// The fixture: a writer that works in the reader's sleeps, or while it checks a copy.
class ExampleReader : public RingReadout
{
  protected:
    ~ExampleReader() override
    {
        EXPECT_EQ(at_checksum, nullptr);
        at_checksum = nullptr;
    }
    ExampleReader() = default;
    ExampleReader(const ExampleReader &) = delete;
    ExampleReader &operator=(const ExampleReader &) = delete;

    // The times of the records that it shows, of so many that are wanted.
    static Numbers shown(int wanted)
    {
        std::string name = "ring_reader";
        std::string count = std::to_string(wanted);
        char *words[] = {name.data(), count.data(), nullptr};
        testing::internal::CaptureStdout();
        ring_reader_main(2, words);
        fflush(stdout);
        std::istringstream lines(testing::internal::GetCapturedStdout());
        Numbers numbers;
        for (std::string line; std::getline(lines, line);) {
            int nr = 0;
            int time = 0;
            EXPECT_EQ(sscanf(line.c_str(), "%d %d", &nr, &time), 2) << line;
            numbers.push_back(time);
        }
        return numbers;
    }
};

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" {

uint16_t __real_stm_crc16(const uint8_t *data, uint16_t length);

uint16_t __wrap_stm_crc16(const uint8_t *data, uint16_t length)
{
    if (at_checksum != nullptr) {
        std::exchange(at_checksum, nullptr)();
    }
    return __real_stm_crc16(data, length);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

TEST_F(ExampleReader, shows_each_record_once_as_long_as_it_keeps_up)
{
    put_good(1, 70);
    in_sleep(1, [] { put_good(71, 75); });
    in_sleep(2, [] { put_good(76, 234); });
    in_sleep(9, [] { put_good(235, 240); });
    EXPECT_EQ(shown(170), from_to(71, 240));
}

TEST_F(ExampleReader, does_not_see_exactly_160_records)
{
    in_sleep(1, [] { put_good(1, 10); });
    in_sleep(2, [] { put_good(11, 170); });
    in_sleep(4, [] { put_good(171, 172); });
    EXPECT_EQ(shown(100), from_to(1, 10) + from_to(171, 172));
}

TEST_F(ExampleReader, misses_whole_turns)
{
    in_sleep(1, [] { put_good(1, 10); });
    in_sleep(2, [] { put_good(11, 180); });
    EXPECT_EQ(shown(20), from_to(1, 10) + from_to(171, 180));
}

TEST_F(ExampleReader, shows_newer_records_in_between_and_again_when_the_writer_comes_round_to_it)
{
    in_sleep(1, [] {
        put_good(1, 10);
        at_checksum = [] { put_good(11, 165); };
    });
    EXPECT_EQ(shown(170), Numbers({1}) + from_to(162, 165) + from_to(6, 165));
}

TEST_F(ExampleReader, leaves_out_a_slot_that_is_half_filled)
{
    in_sleep(1, [this] {
        put_good(1, 10);
        at_checksum = [this] {
            const Bytes record = good_record(162);
            std::copy_n(record.begin(), 24, segment.begin() + 48);
        };
    });
    EXPECT_EQ(shown(100), Numbers({1}) + from_to(3, 10));
}

TEST_F(ExampleReader, goes_round_to_a_writer_that_opens_the_ring_again)
{
    put_good(1, 150);
    in_sleep(1, [] { put_good(151, 170); });
    in_sleep(2, [] {
        RingBuffer_Open("w");
        put_good(171, 172);
    });
    EXPECT_EQ(shown(500), from_to(151, 170) + from_to(11, 160) + from_to(171, 172));
}

TEST_F(ExampleReader, misses_what_was_not_taken_before_the_writer_opens_the_ring_again)
{
    in_sleep(1, [] { put_good(1, 5); });
    in_sleep(2, [] {
        put_good(6, 9);
        RingBuffer_Open("w");
        put_good(10, 14);
    });
    in_sleep(4, [] { put_good(15, 15); });
    EXPECT_EQ(shown(100), from_to(1, 5) + Numbers({15})) << "index 5 looked like nothing new";
}

TEST_F(ExampleReader, passes_over_empty_slots_when_the_writer_opens_the_ring_again)
{
    in_sleep(1, [] { put_good(1, 10); });
    in_sleep(2, [] {
        RingBuffer_Open("w");
        put_good(11, 12);
    });
    EXPECT_EQ(shown(100), from_to(1, 12));
}
