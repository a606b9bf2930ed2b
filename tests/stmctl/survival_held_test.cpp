// While another program has the device open, nothing is sent into its dialogue.
#include "tests/stmctl/survival_bench.hpp"

namespace
{

class SurvivalHeld : public SurvivalBench
{
  protected:
    // follow, in counted time, with a board that falls silent for some seconds while the script
    // holds the device open, until the rest of the script releases it.
    Result held(const std::string &rest)
    {
        EXPECT_EQ(on_fresh_board({}, {"state"}).status, 0);
        const Words follow =
            on_board_with(spell("silence", 2, 5),
                          {"follow", "--variant", "temp", "--keep-going", "-o", "/dev/null"});
        return in_script("echo $$; exec 9<>board/spidev1.0\n" + quoted(follow) +
                         "2>follow.err 9>&- & follow=$!\n" + rest +
                         "await 'records are coming again' follow.err\n"
                         "kill $follow; wait $follow; echo $?\n");
    }

    static size_t count(const std::string &text, const std::string &part)
    {
        size_t found = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
            ++found;
        }
        return found;
    }
};

TEST_F(SurvivalHeld, nothing_is_sent_until_it_is_closed_and_its_user_is_named_each_minute)
{
    const Result result = held("await 'after 2 min$' follow.err; exec 9>&-\n");
    const std::string shell = "process " + result.output.substr(0, result.output.find('\n')) + " ";
    EXPECT_TRUE(result.output.ends_with("\n0\n")) << result.output;
    const std::string errors = read_text("follow.err");
    const std::string follow = "stmctl: follow: ";
    EXPECT_EQ(count(errors, follow + "nothing is sent while process "), 1U) << errors;
    EXPECT_EQ(count(errors, " the device open; waiting for "), 1U) << errors;
    EXPECT_EQ(count(errors, follow + "still waiting for process "), count(errors, " min\n"));
    EXPECT_EQ(count(errors, shell + "(bash -c "), 1 + count(errors, " min\n")) << errors;
    EXPECT_EQ(count(errors, " after 1 min\n"), 1U) << errors;
    EXPECT_EQ(count(errors, " after 2 min\n"), 1U) << errors;
    EXPECT_EQ(count(errors, follow + "records are coming again after "), 1U) << errors;
    const std::vector<Line> lines = transcript();
    const auto pause = std::ranges::adjacent_find(lines, [](const Line &one, const Line &next) {
        return next.microseconds - one.microseconds > 10'000'000;
    });
    ASSERT_NE(pause, lines.end());
    EXPECT_LT(pause->microseconds, 4'000'000) << "from the second time-out on";
    EXPECT_GT((pause + 1)->microseconds, 120'000'000) << "until it is closed";
    EXPECT_EQ((pause + 1)->length, 4096U) << "then the link is synchronised";
}

// The shell's own children come and go, and have it open, too: the words that grep looks for are in
// the message about it, but not at the end of a line.
TEST_F(SurvivalHeld, a_download_reports_once_who_has_it)
{
    write_file("ours.bin", noise(50'000, 9));
    EXPECT_EQ(on_fresh_board({}, {"state"}).status, 0);
    const Words flashing = on_board_with(restart("boot-loader", 0.3),
                                         {"flash", "firmware", "ours.bin", "--retries", "1"});
    const Result result =
        in_script("exec 9<>board/spidev1.0\n" + quoted(flashing) +
                  ">flash.out 2>flash.err 9>&- & flashing=$!\n"
                  "await 'after 2 min$' flash.err; exec 9>&-; wait $flashing; echo $?\n");
    EXPECT_EQ(result.output, "0\n");
    const std::string errors = read_text("flash.err");
    EXPECT_EQ(count(errors, "nothing is sent while "), 1U) << errors;
    EXPECT_EQ(count(errors, " after 1 min\n"), 1U) << errors;
    EXPECT_TRUE(flash(16384, 50'000) == read_file("ours.bin"));
}

TEST_F(SurvivalHeld, stream_that_does_not_keep_going_names_it_and_asks_for_nothing)
{
    EXPECT_EQ(on_fresh_board({}, {"state"}).status, 0);
    const Words follow =
        on_board_with(spell("silence", 2, 1000), {"follow", "--duration", "60", "-o", "/dev/null"});
    const Result result =
        in_script("echo $$; exec 9<>board/spidev1.0\n" + quoted(follow) + "9>&-; echo $?\n");
    EXPECT_TRUE(result.output.ends_with("\n1\n")) << result.output;
    const std::string shell = "process " + result.output.substr(0, result.output.find('\n')) + " ";
    EXPECT_EQ(count(result.errors, "follow: nothing has come for 10 seconds; " + shell), 1U)
        << result.errors;
    EXPECT_EQ(count(result.errors, " the device open, too\n"), 1U) << result.errors;
    for (const Line &line : transcript()) {
        EXPECT_FALSE(!line.sent.empty() && line.sent[0] == 0x23) << "asked for the mode";
    }
}

TEST_F(SurvivalHeld, a_stmctl_that_waits_does_not_count)
{
    const std::string second =
        quoted(both(virtual_board({"--board", path("board")}), {program(), "state", "--wait"}));
    const Result result = held("await 'nothing is sent' follow.err\n" + second +
                               ">second.out 2>second.err 9>&- & second=$!\n"
                               "await 'waiting for process' second.err; exec 9>&-\n");
    EXPECT_TRUE(result.output.ends_with("\n0\n")) << result.output;
    const std::string errors = read_text("follow.err");
    EXPECT_EQ(count(errors, "nothing is sent while "), 1U) << errors;
    EXPECT_EQ(count(errors, "stmctl state --wait"), 0U) << errors;
    wait_until("the second's end", [this] { return !read_text("second.out").empty(); });
    EXPECT_EQ(read_text("second.out"), "application (2)\n");
}

// In namespaces of their own, where other users' processes are taken out of /proc altogether.
TEST_F(SurvivalHeld, it_is_said_once_that_other_users_programs_may_have_it_open)
{
    const std::string follow =
        quoted({TOOL_VIRTUAL_BOARD, "--count-time", "--board", "board", "--fault", "exchange@60",
                "--fault", "exchange@200", "--fault", "exchange@300", program(), "follow",
                "--duration", "5", "--keep-going", "-o", "/dev/null"});
    const Result result =
        run({"unshare", "--mount", "--pid", "--fork", "--mount-proc", "bash", "-c",
             "mount -o remount,hidepid=2 /proc && board=$(mktemp -d) && chmod 777 $board && "
             "cd $board || exit 77; setpriv --reuid=65534 --regid=65534 --clear-groups test -x " +
                 program() + " || exit 77; setpriv --reuid=65534 --regid=65534 --clear-groups " +
                 follow + "; status=$?; rm -rf $board; exit $status"});
    if (getuid() != 0 || result.status == 77) {
        GTEST_SKIP() << "namespaces, or another user, are not allowed here";
    }
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(count(result.errors, "; trying again\n"), 3U) << result.errors;
    EXPECT_EQ(count(result.errors, "stmctl: follow: processes of other users cannot be inspected: "
                                   "they may have the device open\n"),
              1U)
        << result.errors;
}

} // namespace
