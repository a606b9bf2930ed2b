// Two stmctl at once: one refuses or waits, and their dialogues do not mix.
#include "tests/stmctl/stmctl_bench.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

namespace
{

class Lock : public StmctlBench
{
  protected:
    Words on_busy_board(const Words &arguments)
    {
        Words command = {program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return on_board_in_real_time({"--fault", "late=100000"}, command);
    }

    // Starts one that holds the device for the 3 s of a time-out.
    pid_t hold(const Words &arguments = {"get", "sampletime"})
    {
        const pid_t holder = start(on_busy_board(arguments));
        wait_for_lines(3);
        return holder;
    }

    // Runs another one beside it; the workbench's own files belong to the first.
    Result beside(const Words &arguments, const std::string &before = "")
    {
        Words command = {program()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const Words words = on_board_in_real_time({}, command);
        // NOLINTNEXTLINE(cert-env33-c): words of our own
        const int status = system(
            (before + quoted(words) + ">" + path("output") + " 2>" + path("errors")).c_str());
        return {WEXITSTATUS(status), read_text("output"), read_text("errors")};
    }
};

TEST_F(Lock, the_second_refuses_and_names_the_first)
{
    const pid_t holder = hold();
    const Result second = beside({"state"});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.output, "");
    EXPECT_EQ(second.errors.find("stmctl: /dev/spidev1.0 is in use by process "), 0U);
    EXPECT_NE(second.errors.find("stmctl get sampletime); use --wait to wait for it\n"),
              std::string::npos)
        << second.errors;
    kill(holder, SIGINT);
    EXPECT_EQ(finish(holder).status, 3);
}

TEST_F(Lock, what_another_run_wrote_to_the_log_meanwhile_is_not_continued)
{
    const pid_t holder = hold({"follow", "--keep-going"});
    const Result second =
        beside({"records", "-o", path("log"), "--format", "csv", "--append", "--wait"},
               "(for i in $(seq 6000); do grep -qs 'waiting for' " + path("errors") +
                   " && break; sleep 0.05; done; echo other >" + path("log") + "; kill -INT " +
                   std::to_string(holder) + ") & ");
    finish(holder);
    EXPECT_EQ(second.status, 1);
    EXPECT_NE(second.errors.find("stmctl: cannot append to '" + path("log") +
                                 "': its first line does not match; "),
              std::string::npos)
        << second.errors;
    EXPECT_EQ(read_text("log"), "other\n");
}

TEST_F(Lock, the_second_waits_when_told_and_the_dialogues_do_not_mix)
{
    const pid_t holder = hold();
    const Result second = beside({"state", "--wait"});
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.output, "application (2)\n");
    EXPECT_EQ(second.errors.find("stmctl: waiting for process "), 0U);
    EXPECT_EQ(finish(holder).status, 1);
    // The second appends its dialogue to that of the first: one board, one wire.
    std::vector<int> numbers;
    for (const Line &line : transcript()) {
        numbers.push_back(line.number);
    }
    ASSERT_GT(numbers.size(), 100U);
    for (auto at = numbers.begin() + 1; at != numbers.end(); ++at) {
        ASSERT_EQ(*at, *(at - 1) + 1) << "one dialogue goes on to its end";
    }
    EXPECT_EQ((transcript().end() - 2)->sent, Bytes({0x23, 0, 0, 0, 0, 0, 0, 0xAA}));
}

TEST_F(Lock, waiting_ends_by_an_interrupt)
{
    const pid_t holder = hold();
    std::thread interrupting([this] {
        wait_for_words("stmctl: waiting for process ", "errors");
        kill(std::stoi(read_text("second")), SIGINT);
    });
    const Result second = beside({"state", "--wait"}, "echo $$ >" + path("second") + "; exec ");
    interrupting.join();
    EXPECT_EQ(second.status, 3);
    EXPECT_NE(second.errors.find("stmctl: stopped while waiting for /dev/spidev1.0\n"),
              std::string::npos);
    kill(holder, SIGINT);
    finish(holder);
}

TEST_F(Lock, waiting_ends_by_a_typed_s)
{
    const pid_t holder = hold();
    const Result second = beside({"state", "--wait"}, "printf 's\\n' | ");
    EXPECT_EQ(second.status, 3);
    kill(holder, SIGINT);
    finish(holder);
}

TEST_F(Lock, every_command_with_the_device_waits_when_told_and_refuses_otherwise)
{
    write_file("image.bin", {1});
    write_file("settings.txt", {'s', 'a', 'm', 'p', 'l', 'e', 's', 'k', 'i', 'p', ' ', '5'});
    says({"state"});
    const int lock = open(path("board/spidev1.0").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    const Words commands[] = {
        {"flash", "firmware", "image.bin"},
        {"flash", "booter", "image.bin", "--yes"},
        {"state"},
        {"version"},
        {"start"},
        {"reset"},
        {"get", "sampletime"},
        {"get", "--all"},
        {"set", "sampletime", "100"},
        {"save", "saved.txt"},
        {"restore", "settings.txt"},
        {"peek", "0"},
        {"poke", "0", "1"},
        {"dump", "0", "1"},
        {"text", "0"},
        {"records"},
        {"follow"},
        {"adc"},
        {"raw"},
        {"watch"},
    };
    for (Words words : commands) {
        SCOPED_TRACE(joined(words));
        const Result refused = in_shell(words, "</dev/null");
        EXPECT_EQ(refused.status, 1);
        EXPECT_NE(refused.errors.find("); use --wait to wait for it\n"), std::string::npos);
        words.emplace_back("--wait");
        const Result stopped = in_shell(words, "<<<s");
        EXPECT_EQ(stopped.status, 3);
        EXPECT_EQ(stopped.errors.find("stmctl: waiting for process "), 0U) << stopped.errors;
        EXPECT_TRUE(
            stopped.errors.ends_with(")\nstmctl: stopped while waiting for /dev/spidev1.0\n"))
            << stopped.errors;
        EXPECT_EQ(refused.output + stopped.output, "");
    }
    close(lock);
}

TEST_F(Lock, commands_without_the_device_ignore_it)
{
    const pid_t holder = hold();
    EXPECT_EQ(beside({"list"}).status, 0);
    EXPECT_EQ(beside({"set", "sampletime", "x"}).status, 2);
    kill(holder, SIGINT);
    finish(holder);
}

TEST_F(Lock, the_first_is_named_without_its_folder_but_with_its_operands)
{
    if (!std::string(TOOL_EMULATOR).empty()) {
        GTEST_SKIP() << "the first word is the emulator's";
    }
    write_file("image.bin", {1});
    const pid_t holder = hold({"flash", "firmware", "./image.bin"});
    const std::string said = beside({"state"}).errors;
    EXPECT_EQ(said.substr(said.find('(')),
              "(stmctl flash firmware ./image.bin); use --wait to wait for it\n");
    kill(holder, SIGINT);
    finish(holder);
}

TEST_F(Lock, locks_on_other_files_are_not_taken_for_it)
{
    write_file("other", {});
    const pid_t holder = hold();
    const std::string lock = "exec 8>" + path("other") + "; flock 8; ";
    EXPECT_NE(beside({"state"}, lock).errors.find("stmctl get sampletime); use --wait"),
              std::string::npos);
    kill(holder, SIGINT);
    finish(holder);
}

TEST_F(Lock, the_second_goes_on_when_the_first_is_killed)
{
    const pid_t holder = hold({"text", "0"});
    std::thread killing([this, holder] {
        wait_for_words("stmctl: waiting for process ", "errors");
        kill(holder, SIGKILL);
    });
    EXPECT_EQ(beside({"state", "--wait"}).status, 0);
    killing.join();
    EXPECT_EQ(finish(holder).status, 128 + SIGKILL);
}

} // namespace
