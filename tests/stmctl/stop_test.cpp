// The line "s" and Ctrl-C end a running command with status 3; a second Ctrl-C ends it at once.
#include "tests/stmctl/stmctl_bench.hpp"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>

namespace
{

class Stop : public StmctlBench
{
  protected:
    void SetUp() override { write_file("image.bin", noise(5000, 9)); }

    Result typed(const std::string &input, const Words &arguments)
    {
        run({"bash", "-c", "printf '" + input + "' >input"});
        return in_shell(arguments, "<input", {"--fault", "silence"});
    }

    // Whether a process already has a file open.
    static bool has_open(pid_t pid, const std::string &file)
    {
        std::error_code gone;
        const std::string folder = "/proc/" + std::to_string(pid) + "/fd";
        for (const auto &entry : std::filesystem::directory_iterator(folder, gone)) {
            if (std::filesystem::read_symlink(entry.path(), gone) == file) {
                return true;
            }
        }
        return false;
    }

    // Whether a signal waits to be delivered to a process.
    static bool has_signal_pending(pid_t pid)
    {
        std::ifstream file("/proc/" + std::to_string(pid) + "/status");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("ShdPnd:")) {
                return line.find_first_of("123456789abcdef", sizeof("ShdPnd")) != std::string::npos;
            }
        }
        return false;
    }

    // Ends it by a signal, in real time, once it waits.
    Result interrupted(const Words &arguments, int signal_number = SIGINT)
    {
        Words command = {program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        std::filesystem::remove(path(".transcript")); // so that its lines are of this one
        const pid_t pid = start(on_board_in_real_time({"--fault", "silence"}, command));
        wait_for_lines(5);
        kill(pid, signal_number);
        return finish(pid);
    }
};

constexpr char INCOMPLETE[] =
    "flash incomplete at the mode command: stopped by the user; load the image again";

TEST_F(Stop, typed_s_ends_every_wait)
{
    const std::string why = ": stopped before it had finished";
    expect_failure(typed("s\\n", {"get", "sampletime"}), 3, "sampletime" + why);
    EXPECT_LE(transcript().size(), 4U) << "after one poll";
    expect_failure(typed("s\\n", {"set", "sampletime", "1"}), 3, "sampletime" + why);
    expect_failure(typed("s\\n", {"peek", "0"}), 3, "peek" + why);
    expect_failure(typed("s\\n", {"peek", "0", "--long"}), 3, "peek" + why);
    expect_failure(typed("s\\n", {"poke", "0", "1"}), 3, "poke 0x0000" + why);
    expect_failure(typed("s\\n", {"dump", "0", "9"}), 3, "dump" + why);
    expect_failure(typed("s\\n", {"text", "0"}), 3, "text" + why);
    expect_failure(typed("s\\n", {"text", "0", "--write", "x"}), 3, "text" + why);
}

TEST_F(Stop, typed_s_ends_a_read_out_after_other_lines_too)
{
    EXPECT_EQ(typed("yes\\nss\\ns\\n", {"records", "-n", "9"}).status, 3);
    EXPECT_LE(transcript().size(), 9U);
}

TEST_F(Stop, typed_s_may_come_through_a_pipe)
{
    const Result result =
        run({"bash", "-c",
             "printf 's\\nmore\\n' | { " +
                 quoted(on_board_with({"--fault", "silence"}, {"get", "sampletime"})) +
                 "; echo $?; cat; }"});
    EXPECT_EQ(result.errors, "stmctl: sampletime: stopped before it had finished\n");
    EXPECT_EQ(result.output, "3\nmore\n");
}

// As a service may have it for its standard input. What follows is left there.
TEST_F(Stop, typed_s_may_come_through_a_socket)
{
    std::array<int, 2> ends = {};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()), 0);
    ASSERT_EQ(write(ends[1], "s\nmore", 6), 6);
    const int input = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
    dup2(ends[0], STDIN_FILENO);
    const Result result = with_fault("silence", {"get", "sampletime"});
    dup2(input, STDIN_FILENO);
    std::array<char, 10> rest = {};
    EXPECT_EQ(recv(ends[0], rest.data(), rest.size(), MSG_DONTWAIT), 4) << "more";
    for (const int descriptor : {input, ends[0], ends[1]}) {
        close(descriptor);
    }
    expect_failure(result, 3, "sampletime: stopped before it had finished");
}

TEST_F(Stop, lines_for_others_are_left_for_them)
{
    const std::string flash = quoted(on_board_with({}, {"flash", "firmware", "image.bin", "-q"}));
    const std::string reset = quoted(on_board_with({}, {"reset"}));
    const std::string get = quoted(on_board_with({}, {"get", "sampleskip"}));
    const std::string loop = "while read -r line; do { " + flash + ";" + reset +
                             "; } >/dev/null; " + get + "; echo $line; done";
    for (const std::string &script :
         {"printf 'one\\ntwo\\n' | " + loop, "printf 'one\\ntwo\\n' >list; " + loop + " <list"}) {
        const Result result = run({"bash", "-c", script});
        EXPECT_EQ(result.output, "0\none\n0\ntwo\n");
        EXPECT_EQ(result.errors, "");
    }
}

TEST_F(Stop, other_lines_and_the_end_of_the_input_end_nothing)
{
    for (const char *input : {"", "S\\n", "stop\\n", " s\\n", "s \\n", "s", "yes\\ns\\n"}) {
        EXPECT_EQ(typed(input, {"get", "sampletime"}).status, 1) << input;
    }
}

TEST_F(Stop, interrupt_ends_a_wait)
{
    expect_failure(interrupted({"get", "sampletime"}), 3,
                   "sampletime: stopped before it had finished");
    EXPECT_LT(transcript().size(), 2000U);
    expect_failure(interrupted({"get", "sampletime"}, SIGTERM), 3,
                   "sampletime: stopped before it had finished");
}

TEST_F(Stop, interrupt_leaves_a_download)
{
    expect_failure(interrupted({"flash", "firmware", "image.bin"}), 3, INCOMPLETE);
    expect_failure(interrupted({"flash", "firmware", "image.bin"}, SIGTERM), 3, INCOMPLETE);
}

// The module would take its stop line for an acknowledgement, and the total would be right.
TEST_F(Stop, typed_s_leaves_a_download_and_never_reaches_the_module)
{
    expect_failure(typed("s\\n", {"flash", "firmware", "image.bin"}), 3, INCOMPLETE);
    ASSERT_EQ(transcript().size(), 3U);
    EXPECT_EQ(transcript().back().sent, Bytes{0x33});
}

TEST_F(Stop, interrupt_between_attempts_ends_a_download)
{
    Words command = {program(), "flash", "firmware", "image.bin", "--retries", "1000"};
    const pid_t pid = start(on_board_in_real_time({"--fault", "bus-inactive"}, command));
    wait_for_lines(3);
    kill(pid, SIGINT);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.errors.find("flash incomplete at the mode command: "), std::string::npos);
}

// The command fails, before the first poll.
TEST_F(Stop, typed_s_ends_the_pause_before_another_download)
{
    const std::string why = "at the mode command: sending the command failed: Input/output error; ";
    expect_failure(in_shell({"flash", "firmware", "image.bin", "--retries", "5"}, "<<<s",
                            {"--fault", "exchange@2"}),
                   3,
                   "attempt 1 of 6 failed " + why + "trying again\nstmctl: flash incomplete " +
                       why + "stopped by the user");
    EXPECT_EQ(transcript().size(), 2U);
}

// Only a pipe whose writer continues is not left at the first one.
TEST_F(Stop, a_second_interrupt_ends_it_at_once)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const pid_t pid = start(directly({}, {program(), "plot", "pipe"}));
    const int writer = open(path("pipe").c_str(), O_RDWR | O_CLOEXEC);
    wait_until("plot at work", [&] { return has_open(pid, path("pipe")); });
    kill(pid, SIGINT);
    wait_until("the first one's delivery", [pid] { return !has_signal_pending(pid); });
    ASSERT_EQ(waitpid(pid, nullptr, WNOHANG), 0) << "ended by the first";
    kill(pid, SIGINT);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output + result.errors, "");
    close(writer);
}

TEST_F(Stop, a_failure_takes_precedence_over_a_late_stop)
{
    const Result result = in_shell({"state"}, "<<< s");
    EXPECT_EQ(result.status, 0) << "state waits for nothing";
    EXPECT_EQ(result.output, "application (2)\n");
}

TEST_F(Stop, full_disk_for_the_result_does_not_affect_the_stop_of_a_download)
{
    expect_failure(
        in_script(really({"--fault", "silence@2"}, {"flash", "firmware", "image.bin", "-q"}) +
                  ">/dev/full < <(await 'silent from here on' .transcript; printf 's\\n')"),
        3,
        "flash incomplete at block 2, after 2048 of 5000 bytes: stopped by the user; load the "
        "image again");
}

TEST_F(Stop, typed_s_ends_a_wait_even_if_it_comes_in_pieces)
{
    const Result result = in_script(really({"--fault", "silence"}, {"get", "sampletime"}) +
                                    "< <(polls 3; printf s; polls 3; printf '\\n')");
    expect_failure(result, 3, "sampletime: stopped before it had finished");
}

TEST_F(Stop, typed_s_counts_even_with_more_after_it)
{
    expect_failure(typed("s\\nmore\\n", {"get", "sampletime"}), 3,
                   "sampletime: stopped before it had finished");
}

TEST_F(Stop, a_hang_up_ends_a_wait)
{
    expect_failure(interrupted({"get", "sampletime"}, SIGHUP), 3,
                   "sampletime: stopped before it had finished");
}

TEST_F(Stop, interrupt_that_is_ignored_from_the_start_stays_so)
{
    const Words command =
        on_board_in_real_time({"--fault", "silence"}, {program(), "get", "sampletime"});
    const pid_t pid = start({"bash", "-c", "trap '' INT; exec " + quoted(command)});
    wait_for_lines(5);
    kill(pid, SIGINT);
    EXPECT_EQ(finish(pid).status, 1) << "it has waited to the end";
}

TEST_F(Stop, typed_s_counts_if_others_have_read_the_lines_before)
{
    const std::string get = quoted(on_board_with({"--fault", "silence"}, {"get", "sampletime"}));
    const Result result =
        run({"bash", "-c", "printf 'one\\ns\\n' >list; { read -r line; " + get + "; } <list"});
    expect_failure(result, 3, "sampletime: stopped before it had finished");
}

TEST_F(Stop, a_long_wait_does_not_run_out_of_descriptors)
{
    const Result result =
        in_script("ulimit -n 40; " + really({"--fault", "silence"}, {"get", "sampletime"}) +
                  "< <(polls 500; printf 's\\n')");
    expect_failure(result, 3, "sampletime: stopped before it had finished");
}

TEST_F(Stop, typed_s_ends_a_read_out_even_if_it_comes_in_pieces)
{
    const Result result =
        in_script(really({"--fault", "silence"}, {"follow", "--keep-going", "--duration", "3600"}) +
                  "< <(polls 400; printf s; polls 400; printf '\\n')");
    EXPECT_EQ(result.status, 3) << result.errors;
}

TEST_F(Stop, typed_s_ends_what_asks_or_sends_many_settings)
{
    const std::string three = "sampletime 100\nsampleskip 5\ninterpolation 2\n";
    write_file("settings.txt", {three.begin(), three.end()});
    expect_failure(in_shell({"restore", "settings.txt"}, "<<<s"), 3,
                   "restore: stopped by the user\n"
                   "stmctl: restore: ended early, 0 of 3 settings sent");
    expect_failure(in_shell({"get", "--all"}, "<<<s"), 3, "get: stopped by the user");
    expect_failure(in_shell({"save", "settings.txt"}, "<<<s"), 3, "save: stopped by the user");
    EXPECT_EQ(read_text("settings.txt"), three);
}

// The transcript is a pipe: its reader types s after the first polls, and only
// then reads on, to its end.
TEST_F(Stop, typed_s_ends_all_settings_with_the_wait_for_one)
{
    const std::string two = "sampletime 100\nsampleskip 5\n";
    write_file("settings.txt", {two.begin(), two.end()});
    const auto stopped = [this](const std::string &fault, const Words &words) {
        return in_script("rm -f pipe; mkfifo pipe; " +
                         quoted(on_board_with({"--fault", fault, "--transcript", "pipe"}, words)) +
                         "9<>pipe < <({ for i in 1 2 3 4 5; do read -r; done; printf 's\\n'; "
                         "exec cat >/dev/null; } <pipe 9<&-)");
    };
    const std::string end = "sampletime: stopped before it had finished";
    expect_failure(stopped("late@0x51=3000", {"restore", "settings.txt"}), 3,
                   end + "\nstmctl: restore: ended early, 0 of 2 settings sent");
    expect_failure(stopped("late@0x03=3000", {"get", "--all"}), 3, end);
}

} // namespace
