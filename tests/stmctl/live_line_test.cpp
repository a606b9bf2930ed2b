// The live line: the progress of a run whose results go to a file, on a terminal at standard error.
#include "tests/stmctl/terminal_bench.hpp"

#include <sched.h>

#include <cerrno>
#include <cstring>

namespace
{

class LiveLine : public TerminalBench
{
  protected:
    // What is on the screen at the end of a command.
    const std::string &shown(const Words &arguments, const Words &options = {},
                             unsigned short columns = 80, int status = 0)
    {
        open_terminal(on_board_with(options, arguments), columns);
        EXPECT_EQ(close_terminal(), status);
        return screen();
    }

    // The same through a shell, with what follows the command.
    const std::string &shown_by_shell(const Words &arguments, const std::string &behind)
    {
        open_terminal({"bash", "-c", quoted(on_board_with({}, arguments)) + " " + behind});
        EXPECT_EQ(close_terminal(), 0);
        return screen();
    }

    // The first line on a terminal of this width.
    std::string first_line(const Words &arguments, const Words &options, unsigned short columns)
    {
        clear_screen();
        const std::string all = shown(arguments, options, columns);
        return all.substr(1, all.find('\r', 1) - 1);
    }

    static std::string blanks(const std::string &line)
    {
        return "\r" + std::string(line.size(), ' ') + "\r";
    }
};

TEST_F(LiveLine, follow_refreshes_one_line_and_removes_it)
{
    EXPECT_EQ(shown({"follow", "--duration", "0.6", "--format", "csv", "-o", "a.csv"}),
              "\r0:00  249 records  996/s  lost 0  19.8 KiB"
              "\r0:01  499 records  1000/s  lost 0  40.0 KiB" +
                  blanks("0:01  499 records  1000/s  lost 0  40.0 KiB") +
                  "stmctl: follow: 599 records, 0 lost, 0 rejected, 0 overflowing\r\n");
}

TEST_F(LiveLine, records_that_come_without_a_flaw_leave_nothing)
{
    EXPECT_EQ(shown({"records", "-n", "8000", "--format", "csv", "-o", "a.csv"}),
              "\r0:00  3358 records  13356/s  lost 0  276.9 KiB"
              "\r0:01  6716 records  13357/s  lost 0  559.8 KiB" +
                  blanks("0:01  6716 records  13357/s  lost 0  559.8 KiB"));
}

TEST_F(LiveLine, frames_are_counted)
{
    EXPECT_EQ(shown({"raw", "--duration", "0.6", "-o", "a.txt"}),
              "\r0:00  3178 frames  12712/s  2.1 MiB\r0:01  6357 frames  12713/s  4.1 MiB" +
                  blanks("0:01  6357 frames  12713/s  4.1 MiB"));
}

TEST_F(LiveLine, a_narrow_terminal_shows_what_matters)
{
    const std::string line = shown({"follow", "--duration", "0.6", "-o", "a.txt"}, {}, 30);
    EXPECT_EQ(line, "\r0:00  249 rec  996/s  lost 0\r0:01  499 rec  1000/s  lost 0" +
                        blanks("0:01  499 rec  1000/s  lost 0") +
                        "stmctl: follow: 599 records, 0 lost, 0 rejected, 0 overflowing\r\n");
}

TEST_F(LiveLine, loses_its_fields_one_after_another_as_the_terminal_narrows)
{
    const Words follow = {"follow", "--duration", "0.3", "-o", "a.txt"};
    const std::pair<unsigned short, std::string> of_follow[] = {
        {44, "0:00  249 records  996/s  lost 0  101.4 KiB"},
        {43, "0:00  249 rec  996/s  lost 0  101.4 KiB"},
        {39, "0:00  249 rec  996/s  lost 0"},
        {28, "249 rec  996/s  lost 0"},
        {22, "0:00  996/s  lost 0"},
        {19, "996/s  lost 0"},
        {13, "0:00  lost 0"},
        {12, "lost 0"},
    };
    for (const auto &[columns, line] : of_follow) {
        EXPECT_EQ(first_line(follow, {}, columns), line) << columns;
    }
}

TEST_F(LiveLine, of_watch_keeps_losses_longest)
{
    const Words watch = {"watch", "--duration", "1.1"};
    const std::pair<unsigned short, std::string> of_watch[] = {
        {100, "0:00  192 records  702/s  lost 0  rejected 0  overflowing 0  fill 21 of 255"},
        {60, "0:00  192 rec  702/s  lost 0  rej 0  over 0  fill 21"},
        {50, "0:00  192 rec  702/s  lost 0  rej 0  over 0"},
        {38, "0:00  192 rec  702/s  lost 0  rej 0"},
        {30, "192 rec  702/s  lost 0  rej 0"},
        {24, "702/s  lost 0  rej 0"},
        {20, "0:00  702/s  lost 0"},
        {14, "702/s  lost 0"},
        {12, "lost 0"},
    };
    for (const auto &[columns, line] : of_watch) {
        EXPECT_EQ(first_line(watch, {}, columns), line) << columns;
    }
}

TEST_F(LiveLine, losses_and_silences_are_shown)
{
    const std::string line = shown({"follow", "--duration", "6", "-o", "a.txt", "--keep-going"},
                                   {"--fault", "silence@t=2s..4s"});
    for (const std::string &words :
         {"\r0:03  1994 records  0/s  lost 0  837.5 KiB  " + // nothing comes
              blanks("0:03  1994 records  0/s  lost 0  837.5 KiB") +
              "stmctl: follow: no data from the co-processor; asking again\r\n"
              "\r0:03  1994 records  0/s  lost 0  837.5 KiB"
              "\r0:04  1994 records  0/s  lost 0  837.5 KiB\r0:04 ",
          "lost 0  837.5 KiB" + blanks("0:04  1994 records  0/s  lost 0  837.5 KiB") +
              "stmctl: follow: records are coming again after 2.1 s\r\n"
              "\r0:04  2499 records  2020/s  lost 1882  silent 2.1 s  1.0 MiB\r0:05 "}) {
        EXPECT_NE(line.find(words), std::string::npos) << words << "\n" << line;
    }
}

TEST_F(LiveLine, shows_a_silence_rather_than_how_many_records_came)
{
    const std::string line = shown({"follow", "--duration", "6", "-o", "a.txt", "--keep-going"},
                                   {"--fault", "silence@t=2s..4s"}, 34);
    EXPECT_NE(line.find("\r2020/s  lost 1882  silent 2.1 s"), std::string::npos) << line;
}

TEST_F(LiveLine, is_not_shown_where_results_are_visible)
{
    EXPECT_EQ(shown({"follow", "--duration", "0.6", "--format", "csv"}).find("/s"),
              std::string::npos);
}

TEST_F(LiveLine, is_not_shown_where_the_file_is_the_terminal)
{
    EXPECT_EQ(
        shown({"follow", "--duration", "0.6", "--format", "csv", "-o", "/dev/tty"}).find("/s"),
        std::string::npos);
}

TEST_F(LiveLine, is_not_shown_beside_a_pipe)
{
    const std::string all = shown_by_shell({"follow", "--duration", "0.6"}, "| tail -n 1");
    EXPECT_EQ(all.find("/s"), std::string::npos) << all;
}

TEST_F(LiveLine, is_shown_beside_a_redirected_output)
{
    const std::string all =
        shown_by_shell({"follow", "--duration", "0.6", "--format", "csv"}, "> a.csv");
    EXPECT_EQ(all, "\r0:00  249 records  996/s  lost 0  19.8 KiB"
                   "\r0:01  499 records  1000/s  lost 0  40.0 KiB" +
                       blanks("0:01  499 records  1000/s  lost 0  40.0 KiB") +
                       "stmctl: follow: 599 records, 0 lost, 0 rejected, 0 overflowing\r\n");
}

TEST_F(LiveLine, is_not_shown_where_standard_error_is_a_file)
{
    EXPECT_EQ(shown_by_shell({"follow", "--duration", "0.6", "-o", "a.txt"}, "2>errors"), "");
    EXPECT_EQ(read_text("errors"),
              "stmctl: follow: 599 records, 0 lost, 0 rejected, 0 overflowing\n");
}

TEST_F(LiveLine, quiet_shows_none_and_no_summary)
{
    EXPECT_EQ(shown({"follow", "--duration", "0.6", "-o", "a.txt", "-q"}), "");
}

TEST_F(LiveLine, a_failure_takes_its_place)
{
    const std::string all =
        shown({"follow", "--duration", "2", "-o", "a.txt"}, {"--fault", "silence@t=1s..9s"}, 80, 1);
    EXPECT_NE(all.find(" \rstmctl: follow: no data from the co-processor; "), std::string::npos)
        << all;
}

TEST_F(LiveLine, an_interrupt_leaves_no_remnant)
{
    open_terminal(on_board_in_real_time({}, {program(), "follow", "-o", "a.txt"}));
    read_until("/s  lost 0");
    type("\x03");
    EXPECT_EQ(close_terminal(), 0);
    const size_t summary = screen().find(" \rstmctl: follow: ");
    EXPECT_NE(summary, std::string::npos) << screen();
}

TEST_F(LiveLine, the_reader_of_the_ring_shows_one_while_nothing_comes)
{
    if (unshare(CLONE_NEWIPC) != 0) {
        GTEST_SKIP() << "shared memory of its own is not allowed here: " << strerror(errno);
    }
    run(on_board_with({}, {"ring", "write", "--duration", "0.1"}));
    EXPECT_EQ(shown({"ring", "read", "--duration", "1", "-o", "a.txt"}, {}, 80, 1),
              "\r0:00  0 records  0/s  lost 0  0 B\r0:01  0 records  0/s  lost 0  0 B"
              "\r0:01  0 records  0/s  lost 0  0 B\r0:01  0 records  0/s  lost 0  0 B" +
                  blanks("0:01  0 records  0/s  lost 0  0 B") +
                  "stmctl: ring read: 0 records, 0 lost, 0 rejected, 0 overflowing, 0 overruns, 0 "
                  "restarts of the writer; its writer has ended\r\n");
}

} // namespace
