// The ring's writer survives what happens to a board, and its reader reports whatever it misses.
#include "tests/stmctl/survival_bench.hpp"

#include <sched.h>

#include <cerrno>
#include <cstring>

namespace
{

class SurvivalRing : public SurvivalBench
{
  protected:
    void SetUp() override
    {
        if (unshare(CLONE_NEWIPC) != 0) {
            GTEST_SKIP() << "shared memory of its own is not allowed here: " << strerror(errno);
        }
        record_transcripts();
    }

    // The writer in counted time, the reader beside it: it may be too slow, but it says so. Prints
    // the exit statuses of both.
    std::string written_and_read(const Mishap &mishap)
    {
        EXPECT_EQ(on_fresh_board({}, {"ring", "write", "--duration", "0.1"}).status, 0);
        std::filesystem::remove_all(path("board"));
        const Words write =
            both(both(virtual_board({"--count-time", "--board", path("board")}), mishap.options),
                 {program(), "ring", "write", "--summary", "write.json", "--duration",
                  std::to_string(run_time(mishap))});
        const std::string read = quoted(directly({}, {program(), "ring", "read"}));
        const std::string status = quoted(directly({}, {program(), "ring", "status"}));
        return in_script("attached() { " + status + "| grep -q '^attached    2 times'; }\n" + read +
                         "--format csv --silence 1000000 --summary read.json -o read.csv "
                         "2>read.err </dev/null & reader=$!\n"
                         "await_command attached; " +
                         quoted(write) +
                         "2>write.err </dev/null; echo $?; await '^[0-9]' read.csv; kill $reader; "
                         "wait $reader; echo $?\n")
            .output;
    }

    void expect_writer_tells_all(const Mishap &mishap)
    {
        const std::vector<double> told = told_once(read_text("write.err"), "ring write");
        EXPECT_LE(told.size(), 1U);
        EXPECT_TRUE(told.empty() || told[0] < promised_length(mishap)) << told[0];
        const Numbers summary = numbers_in("write.json");
        const long came = summary.at("records") + summary.at("rejected");
        const std::vector<Given> given = lives_of_board();
        EXPECT_EQ(std::ssize(given) - 1, summary.at("steps_back"));
        EXPECT_LE(summary.at("records"), counted("delivered"));
        EXPECT_GE(came + LARGEST_BLOCK * summary.at("failing_exchanges"), counted("delivered"));
        EXPECT_LE(came + summary.at("lost"), counted("measured") + summary.at("rejected"));
        EXPECT_GE(came + summary.at("lost"), counted("delivered"));
    }

    // Gaps within each life of the board are reported. A record that does not rise begins another
    // life.
    void expect_reader_tells_all()
    {
        long records = 0;
        long missing = 0;
        long before = 0;
        std::istringstream lines(read_text("read.csv"));
        std::string line;
        std::getline(lines, line);
        EXPECT_TRUE(line.starts_with("\"nr\";\"temp\";\"rel_t\";")) << line;
        while (std::getline(lines, line)) {
            const long rel_t = std::stol(line.substr(line.find(';', line.find(';') + 1) + 1));
            missing += before != 0 && rel_t > before ? rel_t - before - 1 : 0;
            before = rel_t;
            ++records;
        }
        const Numbers summary = numbers_in("read.json");
        EXPECT_EQ(summary.at("records"), records);
        EXPECT_EQ(summary.at("lost"), missing);
        EXPECT_GT(records, 0);
        EXPECT_LE(records, numbers_in("write.json").at("records"));
    }
};

TEST_F(SurvivalRing, writer_keeps_going_and_reader_reports_what_it_missed)
{
    with_each_mishap([this](const Mishap &mishap) {
        EXPECT_EQ(written_and_read(mishap), "0\n0\n") << read_text("read.err");
        expect_writer_tells_all(mishap);
        expect_reader_tells_all();
        EXPECT_EQ(run(directly({}, {program(), "ring", "remove"})).output, "removed\n");
    });
}

} // namespace
