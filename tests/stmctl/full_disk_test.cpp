// A disk that fills up while results are written, simulated by a limit on the size of files. The
// part that fits ends in a whole line, and the rest is reported.
#include "tests/stmctl/record_bench.hpp"

namespace
{

constexpr char SUMMARY[] =
    "stmctl: records: 365 of 2000 records, 0 lost, 0 rejected, 0 overflowing\n";
constexpr size_t LIMIT = 20'480;

class FullDisk : public RecordBench
{
  protected:
    // The limit also applies to the files of the board, which are larger.
    void SetUp() override
    {
        run(virtual_board({"--board", path("board"), "--count-time", program(), "state"}));
    }

    // Without a transcript, to which the limit would apply as well.
    Result limited(const Words &arguments, const std::string &behind = "")
    {
        Words words = virtual_board({"--board", path("board"), "--count-time", program()});
        words.insert(words.end(), arguments.begin(), arguments.end());
        return run(
            {"bash", "-c", "cd '" + path("") + "'; ulimit -f 20; exec " + quoted(words) + behind});
    }

    void expect_whole_lines(const std::string &name, size_t least) const
    {
        const std::string text = read_text(name);
        ASSERT_NE(text, "");
        EXPECT_EQ(text.back(), '\n');
        EXPECT_GE(text.size(), least);
        EXPECT_LE(text.size(), LIMIT);
    }
};

TEST_F(FullDisk, a_log_ends_in_a_whole_line)
{
    const Result result = limited(
        {"records", "-n", "2000", "--format", "csv", "-o", "log", "--summary", "summary.json"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, SUMMARY + std::string("stmctl: cannot write 'log': File too large\n"));
    expect_whole_lines("log", LIMIT - 100);
    const Table table = csv(read_text("log"));
    EXPECT_EQ(table.back().at("rel_t"), std::to_string(table.size()));
    EXPECT_EQ(table.back().size(), 16U);
    EXPECT_EQ(read_text("summary.json").substr(0, 27), "{\"records\":365,\"wanted\":200");
}

TEST_F(FullDisk, the_output_ends_in_a_whole_line_too)
{
    const Result result =
        limited({"records", "-n", "2000", "--format", "csv", "--summary", "s"}, ">log");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors,
              SUMMARY + std::string("stmctl: cannot write the output: File too large\n"));
    expect_whole_lines("log", LIMIT - 100);
    EXPECT_NE(read_text("s"), "");
    const Result more = limited({"list"}, ">>log");
    EXPECT_EQ(more.status, 1);
    expect_whole_lines("log", LIMIT - 200);
}

TEST_F(FullDisk, a_process_that_shares_the_output_leaves_no_hole_after_it)
{
    const Words words = virtual_board({"--board", path("board"), "--count-time", program(),
                                       "records", "-n", "2000", "--format", "csv"});
    run({"bash", "-c",
         "cd '" + path("") + "'; { (ulimit -f 20; exec " + quoted(words) +
             " 2>/dev/null); echo end; } >log"});
    const std::string text = read_text("log");
    EXPECT_EQ(text.find('\0'), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 6), ";\nend\n");
}

TEST_F(FullDisk, frames_and_a_continued_log_end_in_a_whole_line_too)
{
    const Result frames = limited({"adc", "-n", "200", "--format", "csv", "-o", "log"});
    EXPECT_EQ(frames.status, 1);
    EXPECT_NE(frames.errors.find(" of 200 frames, "), std::string::npos);
    EXPECT_NE(frames.errors.find("\nstmctl: cannot write 'log': File too large\n"),
              std::string::npos);
    expect_whole_lines("log", LIMIT - 100);
    says({"records", "-n", "100", "--format", "csv", "-o", "other"});
    const Result more =
        limited({"records", "-n", "2000", "--format", "csv", "-o", "other", "--append"});
    EXPECT_EQ(more.status, 1);
    expect_whole_lines("other", LIMIT - 100);
}

TEST_F(FullDisk, a_watched_stream_has_a_summary)
{
    const Result full = in_shell({"watch", "--duration", "2"}, ">/dev/full");
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.errors.find("stmctl: watch: "), std::string::npos);
    EXPECT_NE(full.errors.find("\nstmctl: cannot write the output: No space left on device\n"),
              std::string::npos);
}

} // namespace
