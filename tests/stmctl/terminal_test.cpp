// stmctl on a terminal: the progress bar, the question before a boot loader, Ctrl-C from the
// keyboard.
#include "tests/stmctl/terminal_bench.hpp"

#include <sched.h>

#include <cerrno>
#include <cstring>

namespace
{

class Terminal : public TerminalBench
{
  protected:
    void SetUp() override { write_file("image.bin", noise(5000, 9)); }
};

TEST_F(Terminal, shows_a_bar_that_refreshes_itself)
{
    open_terminal(on_board_with({}, {"flash", "firmware", "image.bin"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen(),
              "\r[.........................................]   0 %  0 of 5000 bytes"
              "\r[#####......................]  20 %  1024 of 5000 bytes  26.9 KiB/s  0:00 left"
              "\r[###########................]  40 %  2048 of 5000 bytes  40.4 KiB/s  0:00 left"
              "\r[################...........]  61 %  3072 of 5000 bytes  48.5 KiB/s  0:00 left"
              "\r[######################.....]  81 %  4096 of 5000 bytes  53.8 KiB/s  0:00 left"
              "\r[###########################] 100 %  5000 of 5000 bytes  57.3 KiB/s  0:00 left\r\n"
              "5000 bytes of firmware written to 0x08004000 in 0.09 s, 57.3 KiB/s; stmctl reset "
              "starts it\r\n");
}

TEST_F(Terminal, bar_is_cut_to_a_narrow_terminal)
{
    open_terminal(on_board_with({}, {"flash", "firmware", "image.bin"}), 30);
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_NE(screen().find("\r[###########] 100 %\r\n"), std::string::npos) << screen();
}

TEST_F(Terminal, bar_keeps_the_time_that_is_left_longest)
{
    const std::pair<unsigned short, std::string> lines[] = {
        {150, "[#########################................]  61 %  3072 of 5000 bytes  48.5 KiB/s  "
              "0:00 left"},
        {60, "[######.....]  61 %  48.5 KiB/s  0:00 left"},
        {40, "[######.....]  61 %  0:00 left"},
    };
    for (const auto &[columns, line] : lines) {
        clear_screen();
        open_terminal(on_board_with({}, {"flash", "firmware", "image.bin"}), columns);
        EXPECT_EQ(close_terminal(), 0);
        EXPECT_NE(screen().find("\r" + line + "\r"), std::string::npos) << columns << screen();
    }
}

TEST_F(Terminal, failure_is_shown_below_the_bar)
{
    open_terminal(
        on_board_with({"--fault", "checksum-error@2"}, {"flash", "firmware", "image.bin"}));
    EXPECT_EQ(close_terminal(), 1);
    EXPECT_NE(screen().find("left\r\nstmctl: flash incomplete at block 2, after 2048 of 5000 "),
              std::string::npos)
        << screen();
}

TEST_F(Terminal, asks_before_a_boot_loader_and_takes_yes)
{
    open_terminal(on_board_with({}, {"flash", "booter", "image.bin"}));
    read_until("Type yes to continue: ");
    type("yes\n");
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen().find("Replace the boot loader with image.bin (5000 bytes)?"), 0U);
    EXPECT_TRUE(flash(0, 5000) == read_file("image.bin"));
}

TEST_F(Terminal, anything_but_yes_writes_nothing)
{
    for (const char *answer : {"y\n", "\n", "no\n", "yesterday\n", "\x04"}) {
        open_terminal(on_board_with({}, {"flash", "booter", "image.bin"}));
        read_until("Type yes to continue: ");
        type(answer);
        EXPECT_EQ(close_terminal(), 3);
        EXPECT_TRUE(transcript().empty());
    }
}

TEST_F(Terminal, interrupt_answers_the_question)
{
    open_terminal(on_board_with({}, {"flash", "booter", "image.bin"}));
    read_until("Type yes to continue: ");
    type("\x03");
    EXPECT_EQ(close_terminal(), 3);
    EXPECT_NE(screen().find(
                  "^C\r\nstmctl: flash booter: nothing was written: the answer was not yes\r\n"),
              std::string::npos);
    EXPECT_TRUE(transcript().empty());
}

TEST_F(Terminal, interrupt_leaves_a_download_below_the_bar)
{
    open_terminal(on_board_in_real_time({"--fault", "silence@2"},
                                        {program(), "flash", "firmware", "image.bin"}));
    read_until("2048 of 5000 bytes");
    type("\x03");
    EXPECT_EQ(close_terminal(), 3);
    EXPECT_NE(screen().find("left^C\r\nstmctl: flash incomplete at block 2, after 2048 of 5000 "
                            "bytes: stopped by the user; load the image again\r\n"),
              std::string::npos)
        << screen();
}

TEST_F(Terminal, watch_refreshes_one_line_and_sums_up_below_it)
{
    open_terminal(on_board_with({"--rate", "1000"}, {"watch", "--duration", "0.6"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen(),
              "\r0:00  192 records  702/s  lost 0  rejected 0  overflowing 0  fill 21 of 255"
              "\r0:01  469 records  997/s  lost 0  rejected 0  overflowing 0  fill 80 of 255\r\n"
              "stmctl: watch: 598 records, 0 lost, 0 rejected, 0 overflowing\r\n");
}

TEST_F(Terminal, a_remark_takes_the_place_of_the_line)
{
    open_terminal(
        on_board_with({"--fault", "exchange@200"}, {"watch", "--duration", "2", "--keep-going"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_NE(screen().find(" of 255\r" + std::string(77, ' ') + "\rstmctl: watch: fetching "),
              std::string::npos)
        << screen();
}

TEST_F(Terminal, interrupt_ends_watch_below_its_line)
{
    open_terminal(on_board_in_real_time({}, {program(), "watch"}));
    read_until(" of 255");
    type("\x03");
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_NE(screen().find("^C\r\nstmctl: watch: "), std::string::npos) << screen();
}

TEST_F(Terminal, ring_write_refreshes_one_line)
{
    if (unshare(CLONE_NEWIPC) != 0) {
        GTEST_SKIP() << "shared memory of its own is not allowed here";
    }
    open_terminal(on_board_with({"--rate", "1000"}, {"ring", "write", "--duration", "0.6"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen(), "\r0:00  249 records  996/s  lost 0\r0:01  499 records  1000/s  lost 0"
                        "\r                                 \r"
                        "stmctl: ring write: 599 records, 0 lost, 0 rejected, 0 overflowing\r\n");
}

TEST_F(Terminal, interrupt_does_not_reach_gnuplot)
{
    std::string rows = "\"U1e\";\n";
    for (int row = 0; row < 200000; ++row) {
        rows += std::to_string(row % 100) + ";\n";
    }
    write_file("rows.csv", {rows.begin(), rows.end()});
    open_terminal(directly({}, {program(), "plot", "rows.csv", "--columns", "U1e"}));
    wait_until("gnuplot at work", [this] { return has_child(); });
    type("\x03");
    close_terminal();
    EXPECT_EQ(screen().find("invalid command"), std::string::npos);
}

TEST_F(Terminal, typed_s_ends_a_wait)
{
    open_terminal(on_board_in_real_time({"--fault", "silence"}, {program(), "get", "sampletime"}));
    wait_for_lines(5);
    type("s\n");
    EXPECT_EQ(close_terminal(), 3);
    EXPECT_NE(screen().find("stmctl: sampletime: stopped before it had finished\r\n"),
              std::string::npos);
}

TEST_F(Terminal, bar_does_not_fill_a_wide_terminal)
{
    open_terminal(on_board_with({}, {"flash", "firmware", "image.bin"}), 200);
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_NE(
        screen().find("\r[#################################........]  81 %  4096 of 5000 bytes  "
                      "53.8 KiB/s  0:00 left\r"),
        std::string::npos)
        << screen();
}

TEST_F(Terminal, time_left_goes_down_to_nothing)
{
    write_file("image.bin", noise(507904, 2));
    open_terminal(on_board_with({}, {"flash", "firmware", "image.bin"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_NE(screen().find(" 1024 of 507904 bytes  26.9 KiB/s  0:18 left\r"), std::string::npos);
    EXPECT_NE(screen().find(" 507904 of 507904 bytes  80.5 KiB/s  0:00 left\r\n"),
              std::string::npos);
}

TEST_F(Terminal, watch_shows_what_matters_on_a_narrow_one)
{
    open_terminal(on_board_with({"--rate", "6000"}, {"watch", "--duration", "0.3"}), 80);
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen().substr(0, screen().find("stmctl: ")),
              "\r0:00  766 rec  2476/s  lost 204  rej 0  over 448  fill 254\r\n");
}

TEST_F(Terminal, watch_shows_losses_rejected_ones_and_the_rate_on_a_very_narrow_one)
{
    open_terminal(on_board_with({"--rate", "6000"}, {"watch", "--duration", "0.3"}), 40);
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen().substr(0, screen().find("stmctl: ")),
              "\r0:00  766 rec  2476/s  lost 204  rej 0\r\n");
}

TEST_F(Terminal, watch_is_as_wide_as_the_one_of_its_output)
{
    const std::string watch =
        quoted(on_board_with({"--rate", "6000"}, {"watch", "--duration", "0.3"}));
    open_terminal({"bash", "-c", watch + "2>errors"}, 40);
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen(), "\r0:00  766 rec  2476/s  lost 204  rej 0\r\n");
}

TEST_F(Terminal, a_narrow_one_shows_the_time_left_after_the_bar)
{
    open_terminal(on_board_with({}, {"flash", "firmware", "image.bin"}), 40);
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_NE(screen().find("\r[#########..]  81 %  0:00 left\r"), std::string::npos) << screen();
}

TEST_F(Terminal, progress_is_visible_when_the_result_goes_to_a_file)
{
    open_terminal({"bash", "-c",
                   quoted(on_board_with({}, {"flash", "firmware", "image.bin"})) + " > result"});
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_TRUE(screen().ends_with("0:00 left\r\n")) << screen();
    EXPECT_EQ(read_text("result").substr(0, 22), "5000 bytes of firmware");
}

TEST_F(Terminal, a_quiet_flash_shows_only_its_result)
{
    open_terminal(on_board_with({}, {"flash", "firmware", "image.bin", "-q"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen().substr(0, 22), "5000 bytes of firmware");
}

TEST_F(Terminal, watch_refreshes_a_line_four_times_a_second_and_shows_no_events)
{
    open_terminal(on_board_with({"--rate", "6000"}, {"watch", "--duration", "1.1"}), 100);
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(
        screen(),
        "\r0:00  766 records  2476/s  lost 204  rejected 0  overflowing 448  fill 254 of 255"
        "\r0:01  1616 records  2702/s  lost 1241  rejected 0  overflowing 1088  fill 254 of 255"
        "\r0:01  2466 records  2702/s  lost 2278  rejected 0  overflowing 1728  fill 254 of 255"
        "\r\nstmctl: watch: 3061 records, 3112 lost, 0 rejected, 2176 overflowing\r\n");
}

TEST_F(Terminal, ring_writer_refreshes_a_line_four_times_a_second)
{
    if (unshare(CLONE_NEWIPC) != 0) {
        GTEST_SKIP() << "shared memory of its own is not allowed here: " << strerror(errno);
    }
    open_terminal(on_board_with({}, {"ring", "write", "--duration", "1"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_EQ(screen(), "\r0:00  249 records  996/s  lost 0\r0:01  499 records  1000/s  lost 0"
                        "\r0:01  749 records  1000/s  lost 0\r                                 \r"
                        "stmctl: ring write: 999 records, 0 lost, 0 rejected, 0 overflowing\r\n");
}

// One row stays free for the prompt.
TEST_F(Terminal, plot_is_as_high_as_that_but_never_lower_than_ten_rows)
{
    const std::string rows = "\"rel_t\";\"U1e\";\n1;1;\n2;2;\n";
    write_file("rows.csv", {rows.begin(), rows.end()});
    const std::string gnuplot = "#!/bin/sh\nread -r set terminal size\necho \"$size\"\ncat >rest\n";
    write_file("gnuplot", {gnuplot.begin(), gnuplot.end()});
    std::filesystem::permissions(path("gnuplot"), std::filesystem::perms::owner_all);
    const std::pair<std::string, std::string> sizes[] = {
        {"rows 30 columns 100", "dumb size 99,29"}, {"rows 12 columns 80", "dumb size 79,11"},
        {"rows 11 columns 80", "dumb size 79,10"},  {"rows 5 columns 10", "dumb size 20,10"},
        {"rows 0 columns 0", "dumb size 79,23"},
    };
    for (const auto &[size, drawn] : sizes) {
        clear_screen();
        open_terminal(
            {"bash", "-c",
             "stty " + size + "; export PATH=.:$PATH; exec " +
                 quoted(directly({}, {program(), "plot", "rows.csv", "--columns", "U1e"}))});
        EXPECT_EQ(close_terminal(), 0);
        EXPECT_EQ(screen(), drawn + "\r\n") << size;
    }
}

TEST_F(Terminal, plot_wants_a_file_there)
{
    open_terminal(directly({}, {program(), "plot"}));
    EXPECT_EQ(close_terminal(), 2);
    EXPECT_EQ(screen(), "stmctl: plot: no file given; see stmctl plot --help\r\n");
}

TEST_F(Terminal, hours_are_shown)
{
    write_file("image.bin", noise(507904, 2));
    open_terminal(on_board_with({"--fault", "late=1400", "--fault", "silence@3"},
                                {"flash", "firmware", "image.bin"}));
    EXPECT_EQ(close_terminal(), 1);
    EXPECT_NE(screen().find("  1024 of 507904 bytes  22 B/s  6:21:30 left\r"), std::string::npos)
        << screen();
}

TEST_F(Terminal, a_job_in_the_background_leaves_what_is_typed_alone)
{
    open_terminal({"bash", "-c",
                   "set -m; until [ -e typed ]; do sleep 0.01; done; " +
                       quoted(on_board_with({"--fault", "silence"}, {"get", "sampletime"})) +
                       "& wait $!; echo ended $?"});
    type("s\n");
    write_file("typed", {});
    close_terminal();
    EXPECT_NE(screen().find("ended 1\r\n"), std::string::npos) << screen();
}

TEST_F(Terminal, shorter_line_covers_the_one_before)
{
    open_terminal(on_board_with({"--rate", "1000"}, {"watch", "--duration", "6"}));
    EXPECT_EQ(close_terminal(), 0);
    EXPECT_NE(screen().find("  1000/s  lost 0  rejected 0  overflowing 0  fill 80 of 255"
                            "\r0:05  4638 records  997/s  lost 0  rejected 0  overflowing 0  "
                            "fill 80 of 255 \r"),
              std::string::npos)
        << screen();
}

TEST_F(Terminal, typed_s_counts_wherever_the_output_goes)
{
    open_terminal(
        {"bash", "-c", really({"--fault", "silence"}, {"get", "sampletime"}) + ">output"});
    type("s\n");
    EXPECT_EQ(close_terminal(), 3);
}

TEST_F(Terminal, s_counts_through_a_pipe_while_the_output_is_on_it)
{
    open_terminal(
        {"bash", "-c",
         "echo s | " + quoted(on_board_with({"--fault", "silence"}, {"get", "sampletime"}))});
    EXPECT_EQ(close_terminal(), 3);
}

} // namespace
