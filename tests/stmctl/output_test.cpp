// stmctl's output: complete to its last line, quiet when its reader has gone, an error when the
// disk is full.
#include "tests/stmctl/stmctl_bench.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace
{

class Output : public StmctlBench
{
};

const std::vector<Words> COMMANDS = {
    {"state"},
    {"version"},
    {"get", "sampletime"},
    {"set", "sampletime", "1"},
    {"list"},
    {"peek", "0"},
    {"poke", "0", "1"},
    {"dump", "0", "4096"},
    {"text", "0"},
    {"--help"},
    {"--help", "access"},
    {"completion", "bash"},
    {"flash", "--help"},
    {"--version"},
};

TEST_F(Output, full_disk_is_an_error_for_every_command)
{
    for (const Words &words : COMMANDS) {
        const Result result = in_shell(words, ">/dev/full");
        EXPECT_EQ(result.status, 1) << words[0];
        EXPECT_EQ(result.errors, "stmctl: cannot write the output: No space left on device\n");
    }
}

TEST_F(Output, closed_pipe_ends_every_command_quietly)
{
    for (const Words &words : COMMANDS) {
        const Result result = in_shell(words, "| true; exit ${PIPESTATUS[0]}");
        EXPECT_EQ(result.status, 0) << words[0];
        EXPECT_EQ(result.errors, "") << words[0];
    }
}

TEST_F(Output, closed_pipe_does_not_hide_a_failure)
{
    const Result result =
        in_shell({"get", "sampletime"}, "| true; exit ${PIPESTATUS[0]}", {"--fault", "silence"});
    EXPECT_EQ(result.status, 1);
}

TEST_F(Output, closed_pipe_does_not_hide_that_the_user_has_stopped_it)
{
    write_file("image.bin", Bytes(5000, 1));
    std::string words;
    for (const std::string &word : on_board_in_real_time(
             {"--fault", "checksum-error@3"},
             {program(), "flash", "firmware", "image.bin", "--retries", "1000"})) {
        words += "'" + word + "' ";
    }
    const pid_t pid = start({"bash", "-c", "exec " + words + " > >(true)"});
    wait_for_lines(20);
    kill(pid, SIGINT);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.errors.find("flash incomplete "), std::string::npos);
}

TEST_F(Output, closed_pipe_does_not_end_work_before_it_is_done)
{
    Words poke = {"poke", "0x1000"};
    for (int value = 1; value <= 100; ++value) {
        poke.push_back(std::to_string(value));
    }
    const Result result = in_shell(poke, "| true; exit ${PIPESTATUS[0]}");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(says({"peek", "0x1063"}), "100 (0x64)\n");
}

TEST_F(Output, closed_standard_output_is_an_error)
{
    const Result result = in_shell({"state"}, ">&-");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "stmctl: cannot write the output: Bad file descriptor\n");
}

TEST_F(Output, closed_standard_input_is_an_error_when_it_is_read)
{
    expect_failure(run({"bash", "-c", quoted(directly({}, {program(), "plot"})) + "<&-"}), 1,
                   "cannot read standard input: Bad file descriptor");
}

TEST_F(Output, the_device_never_becomes_a_standard_descriptor)
{
    const Result result = in_shell({"state"}, "<&- 2>&-");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "application (2)\n");
    EXPECT_EQ(in_shell({"state"}, "<&- >&- 2>&-").status, 1);
    EXPECT_EQ(in_shell({"get", "sampletime"}, "<&- 2>&-", {"--fault", "silence"}).status, 1);
}

TEST_F(Output, no_file_takes_the_place_of_a_closed_standard_descriptor)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const std::string plot = quoted(directly({}, {program(), "plot", "pipe"}));
    const pid_t pid = start({"bash", "-c", "exec " + plot + "<&- 2>&-"});
    const int writer = open(path("pipe").c_str(), O_WRONLY | O_CLOEXEC); // once it is read
    for (const char *number : {"0", "2"}) {
        const std::string descriptor = "/proc/" + std::to_string(pid) + "/fd/" + number;
        std::error_code closed;
        EXPECT_EQ(std::filesystem::read_symlink(descriptor, closed), "/dev/null") << number;
    }
    close(writer);
    EXPECT_EQ(finish(pid).status, 1) << "there was nothing in it";
}

TEST_F(Output, what_comes_before_a_failure_stands_before_it)
{
    const Result result = in_shell({"poke", "0", "1", "2"}, "2>&1", {"--fault", "exchange@5"});
    EXPECT_EQ(result.output, "0x0000 = 1 (answer 1)\nstmctl: poke 0x0001: sending the command "
                             "failed: Input/output error\n");
}

} // namespace
