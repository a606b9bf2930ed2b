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

} // namespace
