// A stream beside other programs on the same board: they disturb it, as they would on a real one, and it
// comes back after each of them.
#include "tests/stmctl/stmctl_bench.hpp"

namespace
{

class SharedStream : public StmctlBench
{
  protected:
    std::string beside(const Words &command) { return quoted(on_board_in_real_time({}, command)); }

    // Runs a program to its end, and waits until records come again.
    std::string then(const Words &command)
    {
        return beside(command) + ">>programs.out; echo [$?]\n" +
               "await_command has_records $(($(records) + 100))\n";
    }
};

TEST_F(SharedStream, comes_back_after_each_program_that_takes_the_wire)
{
    const Result result = in_script(
        "records() { wc -l <stream.csv; }\n"
        "has_records() { [ $(records) -ge $1 ]; }\n" +
        really({}, {"follow", "--keep-going", "-o", "stream.csv"}) +
        "2>follow.err </dev/null & follow=$!\n"
        "polls 100\n" +
        beside({update_program(), "-start"}) + ">>programs.out; echo [$?]\n" +
        then({update_program(), "-reset"}) + then({probe_program("front_end"), "show", "1"}) +
        "kill $follow; wait $follow; echo [$?]\n");
    EXPECT_EQ(result.output, "[0]\n[0]\n[0]\n[0]\n");
    EXPECT_TRUE(read_text("programs.out").ends_with("\n"));
    int next = 1;
    int64_t before = 0;
    for (const Line &line : transcript()) {
        ASSERT_EQ(line.number, next++);
        ASSERT_GE(line.microseconds, before);
        before = line.microseconds;
    }
    const std::string summary = read_text("follow.err");
    EXPECT_NE(summary.find(" lost, "), std::string::npos) << summary;
    EXPECT_NE(summary.find(" overflowing, silent "), std::string::npos) << summary;
}

// The stream polls on while the image is loaded, until it gives up; the image is whole, or update says why
// it is not.
TEST_F(SharedStream, leaves_an_image_whole_that_another_program_loads_meanwhile)
{
    constexpr size_t SIZE = 100'000;
    constexpr size_t FIRMWARE_AT = 16'384; // in the flash
    write_file("image.bin", noise(SIZE, 3));
    const Result result = in_script(
        "records() { wc -l <stream.csv; }\n"
        "has_records() { [ $(records) -ge $1 ]; }\n" +
        really({}, {"follow", "--keep-going", "-o", "stream.csv"}) +
        "2>follow.err </dev/null & follow=$!\n"
        "polls 100\n" +
        beside({update_program(), "-firmware", "image.bin"}) + ">flash.out 2>flash.err\n" +
        then({update_program(), "-reset"}) + "kill $follow; wait $follow; echo [$?]\n");
    EXPECT_EQ(result.output, "[0]\n[0]\n");
    const std::string summary = read_text("follow.err");
    EXPECT_NE(summary.find("records are coming again after "), std::string::npos) << summary;
    const std::string said = read_text("flash.out");
    if (said.find("SPI timeout\n") != std::string::npos) {
        return; // an acknowledgement that the stream's own commands have swept away
    }
    EXPECT_TRUE(said.ends_with("Transmitted data: 100000 Byte\n")) << said;
    EXPECT_EQ(read_text("flash.err"), "");
    EXPECT_TRUE(flash(FIRMWARE_AT, SIZE) == read_file("image.bin"));
}

} // namespace
