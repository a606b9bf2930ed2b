// Waits spent, not counted: exchanges and downloads take at least as long as on a real board. How
// much longer is the machine's affair.
#include "tests/tool/workbench.hpp"

#include <chrono>
#include <cstdio>

namespace
{

class RealTime : public Workbench
{
  protected:
    // Runs update on a board and says how long it took.
    std::chrono::duration<double> time_of(const Words &options, const Words &arguments,
                                          Result &result)
    {
        Words command = {update_program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const auto begin = std::chrono::steady_clock::now();
        result = run(on_board_in_real_time(options, command));
        return std::chrono::steady_clock::now() - begin;
    }
};

struct Exchanges {
    const char *count;
    const char *bytes;
    const char *speed_hz;
    long shortest_ns; // of one: bytes * 8 / speed
};

TEST_F(RealTime, an_exchange_takes_no_less_than_the_wire_needs)
{
    for (const Exchanges &row : {Exchanges{"1000", "20", "6000000", 26'666},
                                 {"300", "4096", "6000000", 5'461'333},
                                 {"1000", "20", "1000000", 160'000},
                                 {"50", "4096", "1000000", 32'768'000}}) {
        const Result result =
            run(virtual_board({probe_program("wire_time"), row.count, row.bytes, row.speed_hz}));
        const std::string words = result.output.substr(0, result.output.find('\n'));
        long total_us = 0;
        long shortest_ns = 0;
        ASSERT_EQ(sscanf(words.c_str(), "exchanges: %ld us in all, shortest %ld ns", &total_us,
                         &shortest_ns),
                  2)
            << result.output;
        EXPECT_GE(shortest_ns, row.shortest_ns) << words;
        EXPECT_GE(total_us, std::stol(row.count) * row.shortest_ns / 1000) << words;
    }
}

TEST_F(RealTime, the_delays_of_its_transfers_belong_to_an_exchange)
{
    const Result result = run(virtual_board({probe_program("misuse"), "delays"}));
    EXPECT_EQ(result.output, "two transfers with delays of 30 and 20 ms: 2\n"
                             "at least 50 ms: yes\n");
}

TEST_F(RealTime, a_thread_is_not_cancelled_in_the_middle_of_an_exchange)
{
    const Result result = run(virtual_board({probe_program("misuse"), "cancel"}));
    EXPECT_EQ(result.output, "the cancelled exchange: 4\n"
                             "the next one: 4\n");
}

TEST_F(RealTime, a_silent_board_is_given_up_after_its_1501_polls)
{
    write_file("image.bin", noise(10, 1));
    Result result;
    const auto time = time_of({"--fault", "silence"}, {"-firmware", "image.bin"}, result);
    EXPECT_EQ(result.output, "SPI timeout\n");
    EXPECT_EQ(transcript().size(), 1U + 1U + 1501U);
    EXPECT_GE(time.count(), 1501 * 0.011);
}

TEST_F(RealTime, a_download_of_200_kib_arrives_whole)
{
    const Bytes image = noise(204800, 7);
    write_file("image.bin", image);
    Result result;
    const auto time = time_of({"--busy", "1"}, {"-firmware", "image.bin"}, result);
    EXPECT_TRUE(result.output.ends_with("Transmitted data: 204800 Byte\n"));
    EXPECT_TRUE(flash(16384, image.size()) == image);
    EXPECT_GE(time.count(), (200 + 2) * 2 * 0.011);
}

} // namespace
