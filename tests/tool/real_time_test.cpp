// update with its waits spent, not counted: as long as it takes on a real board.
#include "tests/tool/workbench.hpp"

#include <chrono>

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
