// The log of a night: a loop restarts follow, whatever ended it; the sum of its summaries is
// compared with what the board counted.
#include "tests/stmctl/survival_bench.hpp"

namespace
{

class NightLog : public SurvivalBench
{
  protected:
    // A script that continues with the same log and the same board. Each run's summary has a
    // number.
    Result night(const std::string &runs)
    {
        std::string board;
        for (const std::string &word : virtual_board({"--count-time", "--board", path("board")})) {
            board += "'" + word + "' ";
        }
        return run(
            {"bash", "-c",
             "n=0\n"
             "follow() { # DURATION FAULT...; with exec=exec the run takes the place of the shell\n"
             "  local time=$1; shift; n=$((n + 1))\n" +
                 ("  $exec " + board + " \"$@\" '" + program() +
                  "' follow --format csv -o night.csv --append --keep-going "
                  "--fail-on-loss --summary summary-$n --duration $time </dev/null\n") +
                 "}\n"
                 "keep() { cp board/counts counts-$n; cp board/lives lives-$n; }\n" +
                 runs});
    }

    std::vector<std::string> lines_of_log() const
    {
        std::istringstream text(read_text("night.csv"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(text, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    // What the board counted in a run, from the copy that was kept.
    long counted_in(int run, const std::string &name) const
    {
        std::istringstream rows(read_text("counts-" + std::to_string(run)));
        for (std::string row; std::getline(rows, row);) {
            if (row.starts_with(name + " ")) {
                return std::stol(row.substr(name.size()));
            }
        }
        ADD_FAILURE() << "run " << run << ": the board does not count " << name;
        return 0;
    }

    Numbers summary_of(int run) const { return numbers_in("summary-" + std::to_string(run)); }
};

TEST_F(NightLog, holds_what_the_board_delivered_and_its_summaries_count_the_rest)
{
    const Result result = night("follow 5; echo $?; keep\n"
                                "follow 8 --fault silence@t=2s..4s; echo $?; keep\n"
                                "follow 8 --fault restart@t=3s=application; echo $?; keep\n"
                                "follow 5 --fault flip@500; echo $?; keep\n"
                                "follow 5; echo $?; keep\n");
    EXPECT_EQ(result.output, "0\n1\n1\n1\n0\n") << result.errors;
    long delivered = 0;
    long records = 0;
    for (int run = 1; run <= 5; ++run) {
        const Numbers summary = summary_of(run);
        EXPECT_EQ(summary.at("records") + summary.at("rejected"), counted_in(run, "delivered"))
            << "run " << run;
        delivered += counted_in(run, "delivered") - summary.at("rejected");
        records += summary.at("records");
    }
    const std::vector<std::string> lines = lines_of_log();
    EXPECT_EQ(std::ssize(lines), 1 + records);
    EXPECT_EQ(records, delivered);
    EXPECT_EQ(
        std::ranges::count_if(lines, [](const std::string &line) { return line.starts_with('"'); }),
        1);
}

// What was in the program's buffer is lost with it, and the last line may be incomplete: what comes
// later is on lines of its own.
TEST_F(NightLog, continues_after_a_run_that_was_killed)
{
    const Result result = night("follow 5; keep\n"
                                "exec=exec follow 100000 & pid=$!; n=2\n"
                                "until [ $(wc -l <night.csv) -gt 9000 ]; do sleep 0.01; done\n"
                                "kill -9 $pid; wait $pid 2>/dev/null; keep\n"
                                "follow 5; echo $?; keep\n");
    EXPECT_EQ(result.output, "0\n") << result.errors;
    const std::vector<std::string> lines = lines_of_log();
    const size_t fields = static_cast<size_t>(std::ranges::count(lines.at(0), ';'));
    long whole = 0;
    for (size_t i = 1; i < lines.size(); ++i) {
        EXPECT_FALSE(lines[i].starts_with('"')) << "a second header in line " << i;
        whole += static_cast<size_t>(std::ranges::count(lines[i], ';')) == fields ? 1 : 0;
    }
    EXPECT_GE(whole, std::ssize(lines) - 2) << "one line at most is not whole";
    const long told = summary_of(1).at("records") + summary_of(3).at("records");
    EXPECT_GT(whole, told) << "the killed run's are there";
    EXPECT_LE(whole, told + counted_in(2, "delivered"));
}

} // namespace
