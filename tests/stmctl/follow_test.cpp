// follow: the live stream, until its user, a number or the time ends it; losses are counted.
#include "tests/stmctl/record_bench.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

namespace
{

class Follow : public RecordBench
{
  protected:
    static Words rest(std::string format)
    {
        return {"--format", std::move(format), "--variant", "temp"};
    }

    // Starts one in real time, and returns when it has received some blocks of records.
    pid_t start_stream(const Words &options, const Words &arguments)
    {
        std::filesystem::remove(path(".transcript")); // so that its lines are of this one
        Words command = {program(), "follow", "--format", "csv", "--variant", "temp"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const pid_t pid = start(on_board_in_real_time(options, command));
        wait_for_note("; block 12:");
        return pid;
    }

    // The records that a stream has shown: in order, and all missing ones are reported. In real
    // time a busy machine may be too late for some.
    void expect_told(const Table &table, const std::string &errors) const
    {
        ASSERT_GE(table.size(), 10U);
        expect_rising(table);
        const long last = std::stol(table.back().at("rel_t"));
        EXPECT_EQ(errors.find("stmctl: follow: " + std::to_string(table.size()) + " records, " +
                              std::to_string(last - std::ssize(table)) + " lost, "),
                  0U)
            << errors;
    }

    // Waits until a process's standard output is a pipe that is full.
    static void wait_for_full_pipe(pid_t pid)
    {
        wait_until("a full pipe", [pid] {
            const std::string output = "/proc/" + std::to_string(pid) + "/fd/1";
            pollfd pipe = {open(output.c_str(), O_WRONLY | O_NONBLOCK), POLLOUT, 0};
            const bool full = pipe.fd >= 0 && poll(&pipe, 1, 0) == 0;
            close(pipe.fd);
            return full;
        });
    }
};

TEST_F(Follow, shows_as_many_records_as_requested)
{
    for (const char *variant : {"base", "omega", "temp"}) {
        const Result result =
            stmctl({"follow", "-n", "500", "--format", "csv", "--variant", variant});
        EXPECT_EQ(result.status, 0) << variant;
        EXPECT_EQ(column(csv(result.output), "rel_t"), numbers(1, 500)) << variant;
        EXPECT_EQ(result.errors, "stmctl: follow: 500 of 500 records, 0 lost, 0 rejected, 0 "
                                 "overflowing\n");
    }
    EXPECT_EQ(count(stmctl({"follow", "-n", "7"}).output, " rel_t: "), 7U);
    EXPECT_EQ(count(stmctl({"follow", "-n", "7", "--format", "hex"}).output, "Received"), 7U);
}

TEST_F(Follow, temperature_has_its_name_and_jsonl_agrees_with_csv)
{
    const Table lines =
        csv(stmctl({"follow", "-n", "300", "--variant", "temp", "--format", "csv"}).output);
    EXPECT_EQ(lines[0].at("temp"), "2350");
    EXPECT_EQ(lines[0].count("omega_t"), 0U);
    EXPECT_EQ(
        jsonl(stmctl({"follow", "-n", "300", "--variant", "temp", "--format", "jsonl"}).output),
        lines);
}

TEST_F(Follow, it_is_done_when_its_time_is_over)
{
    const Result result =
        stmctl({"follow", "--variant", "temp", "--duration", "10", "--format", "csv"});
    EXPECT_EQ(result.status, 0);
    const size_t records = csv(result.output).size();
    EXPECT_GT(records, 9900U);
    EXPECT_LE(records, 10000U);
    EXPECT_NE(result.errors.find(" 0 lost, 0 rejected, 0 overflowing\n"), std::string::npos);
    EXPECT_EQ(stmctl({"follow", "-n", "100000", "--duration", "1", "--variant", "temp"}).status, 1);
}

TEST_F(Follow, the_user_can_end_it)
{
    const Result typed = in_shell({"follow", "--format", "csv"}, "<<<s");
    EXPECT_EQ(typed.status, 0);
    EXPECT_EQ(typed.errors, "stmctl: follow: 0 records, 0 lost, 0 rejected, 0 overflowing\n");
    EXPECT_EQ(in_shell({"follow", "-n", "5"}, "<<<s").status, 3);
    const pid_t pid = start_stream({}, {});
    kill(pid, SIGINT);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output.back(), '\n');
    expect_told(csv(result.output), result.errors);
}

TEST_F(Follow, an_interrupt_leaves_the_output_whole_while_it_waits_for_its_reader)
{
    const std::string words = quoted(on_board_with({}, {"follow", "--format", "csv"}));
    const pid_t pid = start({"bash", "-c",
                             "exec " + words +
                                 "> >(while [ ! -e go ] && kill -0 $$; do sleep 0.01; done\n"
                                 "cat >slow.csv; touch done)"});
    wait_for_full_pipe(pid);
    kill(pid, SIGINT);
    write_file("go", {});
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::string records = result.errors.substr(strlen("stmctl: follow: "));
    wait_until("its reader's end", [this] { return std::filesystem::exists(path("done")); });
    EXPECT_EQ(csv(read_text("slow.csv")).size(), std::stoul(records));
}

// Closing a terminal sends two.
TEST_F(Follow, other_signals_end_it_cleanly_however_many_come)
{
    const pid_t pid = start_stream({}, {"-o", "file.csv"});
    kill(pid, SIGHUP);
    kill(pid, SIGHUP);
    kill(pid, SIGTERM);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 0);
    expect_told(csv(read_text("file.csv")), result.errors);
}

TEST_F(Follow, what_comes_after_the_wanted_number_does_not_count)
{
    const Result wanted = with_fault("flip@90", {"follow", "-n", "76", "--variant", "temp"});
    EXPECT_EQ(wanted.status, 0);
    EXPECT_EQ(wanted.errors,
              "stmctl: follow: 76 of 76 records, 0 lost, 0 rejected, 0 overflowing\n");
}

TEST_F(Follow, a_rejected_record_is_a_failure_unless_the_user_ended_the_run)
{
    const Words follow = {"follow", "--variant", "temp", "--duration", "2"};
    EXPECT_EQ(with_fault("flip@90", follow).status, 1);
    const Result ended = in_shell({"follow", "--variant", "temp", "--rate", "x"}, "");
    EXPECT_EQ(ended.status, 2);
    const pid_t pid = start_stream({"--fault", "flip@9"}, {});
    kill(pid, SIGINT);
    const Result result = finish(pid);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.errors.find(" 1 rejected,"), std::string::npos) << result.errors;
}

// A script would hang.
TEST_F(Follow, a_board_that_stays_silent_is_given_up_unless_it_is_to_keep_going)
{
    for (const char *command : {"follow", "records", "watch"}) {
        const Result result = with_fault("silence", {command, "--duration", "60"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(count(result.errors, "nothing has come for 10 seconds; nothing is answering: "
                                       "does the co-processor have power, or has it hung?\n"),
                  1U)
            << result.errors;
        EXPECT_LT(transcript().back().microseconds, 11'000'000);
        EXPECT_GT(transcript().back().microseconds, 9'900'000);
        with_fault("silence", {command, "--duration", "15", "--keep-going"});
        EXPECT_GT(transcript().back().microseconds, 14'900'000);
    }
}

TEST_F(Follow, rejected_records_are_not_a_silence)
{
    Words faults = {"--rate", "2"};
    for (int record = 1; record <= 40; ++record) {
        faults.insert(faults.end(), {"--fault", "flip@" + std::to_string(record)});
    }
    const Result result = stmctl({"follow", "--variant", "temp", "--duration", "15"}, faults);
    EXPECT_EQ(count(result.errors, "nothing has come"), 0U) << result.errors;
}

TEST_F(Follow, a_termination_ends_a_blocked_output)
{
    const std::string command = quoted(on_board_with({}, {"follow", "--format", "csv"}));
    const pid_t pid =
        start({"bash", "-c", "exec " + command + "> >(exec tail --pid $$ -f /dev/null)"});
    wait_for_full_pipe(pid);
    kill(pid, SIGTERM);
    finish(pid); // which hangs otherwise, because nobody reads on
}

TEST_F(Follow, a_slow_stream_is_not_a_silence)
{
    const Result slow = stmctl({"follow", "--duration", "10", "--format", "csv"}, {"--rate", "20"});
    EXPECT_EQ(slow.status, 0);
    EXPECT_EQ(count(slow.errors, "no data from"), 0U) << slow.errors;
    EXPECT_NE(slow.errors.find(" time-outs\n"), std::string::npos);
}

// Block 1 has few records, the following ones come in blocks of twenty-odd.
TEST_F(Follow, gaps_after_rejected_records_are_counted)
{
    for (const char *format : {"csv", "jsonl", "text"}) {
        const Result result = with_fault(
            "flip@500", {"follow", "-n", "2000", "--variant", "temp", "--format", format});
        EXPECT_EQ(result.status, 1) << format;
        EXPECT_NE(result.errors.find("2000 of 2000 records, "), std::string::npos);
        EXPECT_NE(result.errors.find(" 1 rejected, 0 overflowing\n"), std::string::npos);
    }
    const Result result =
        with_fault("flip@500", {"follow", "-n", "2000", "--variant", "temp", "--format", "csv"});
    const Words times = column(csv(result.output), "rel_t");
    EXPECT_EQ(std::ranges::count(times, "499"), 1);
    EXPECT_EQ(std::ranges::count(times, "500"), 0);
    const std::string lost = std::to_string(std::stoi(times.back()) - 2000);
    EXPECT_NE(result.errors.find(", " + lost + " lost, "), std::string::npos) << result.errors;
    EXPECT_EQ(with_fault("flip@500", {"follow", "-n", "2000", "--variant", "temp", "--keep-going"})
                  .status,
              0);
}

TEST_F(Follow, a_repeated_record_is_a_step_back)
{
    const Result result =
        with_fault("stuck@30", {"follow", "-n", "100", "--variant", "temp", "--format", "csv"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "stmctl: follow: 100 of 100 records, 1 lost, 0 rejected, 0 "
                             "overflowing, 1 step back in rel_t\n");
}

TEST_F(Follow, overflows_are_counted)
{
    for (const char *format : {"csv", "text"}) {
        const Result result = stmctl(
            {"follow", "-n", "5000", "--variant", "temp", "--format", format}, {"--rate", "6000"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.errors.find(" 0 lost"), std::string::npos) << result.errors;
        EXPECT_EQ(result.errors.find(" 0 overflowing"), std::string::npos) << result.errors;
    }
    const Result result = stmctl({"follow", "-n", "5000", "--variant", "temp", "--format", "csv"},
                                 {"--rate", "6000"});
    const Table table = csv(result.output);
    const auto overflowing = std::ranges::count_if(
        table, [](const auto &row) { return std::stoi(row.at("buffered")) > 190; });
    const int lost = std::stoi(table.back().at("rel_t")) - 5000;
    EXPECT_EQ(result.errors, "stmctl: follow: 5000 of 5000 records, " + std::to_string(lost) +
                                 " lost, 0 rejected, " + std::to_string(overflowing) +
                                 " overflowing\n");
}

TEST_F(Follow, a_failed_exchange_ends_it_or_is_overcome)
{
    const Words words = {"follow", "-n", "1000", "--variant", "temp", "--format", "csv"};
    Result result = with_fault("exchange@60", words);
    EXPECT_EQ(result.status, 1);
    EXPECT_GT(csv(result.output).size(), 10U);
    EXPECT_NE(result.errors.find("fetching the data failed: Input/output error\n"),
              std::string::npos);
    Words going = words;
    going.emplace_back("--keep-going");
    result = with_fault("exchange@60", going);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(csv(result.output).size(), 1000U);
    EXPECT_EQ(count(result.output, "nr"), 1U);
    EXPECT_NE(result.errors.find("; trying again\n"), std::string::npos);
    EXPECT_NE(result.errors.find(", 1 failing exchange\n"), std::string::npos);
}

TEST_F(Follow, a_silent_board_is_reported_once)
{
    const Result result = with_fault("silence", {"follow", "--duration", "20"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(count(result.errors, "no data from the co-processor; waiting for it"), 1U);
    EXPECT_NE(result.errors.find(" time-outs\n"), std::string::npos);
}

// Forty records fill no buffer: what waits for a full one is there when all have come. Two a second
// are no silence, whose remark would bring out what is held.
TEST_F(Follow, time_that_is_over_while_it_waits_for_the_application_ends_it_without_a_request)
{
    stmctl({"follow", "--duration", "5", "--keep-going"}, {"--mode", "boot loader"});
    std::vector<Line> lines = transcript();
    while (lines.back().note == "mode asked for" || lines.back().note == "answer") {
        lines.pop_back();
    }
    EXPECT_EQ(lines.back().note, "synchronised");
}

// Each cause of one trouble is told; its length is that of all of it.
TEST_F(Follow, trouble_begins_with_the_first_of_its_causes)
{
    const Result result = stmctl({"follow", "--duration", "9", "--keep-going", "-o", "a.txt"},
                                 {"--fault", "silence@t=1s..6s", "--fault", "gone@t=4s..5s"});
    EXPECT_EQ(result.errors,
              "stmctl: follow: no data from the co-processor; asking again\n"
              "stmctl: follow: the device is gone; waiting for it\n"
              "stmctl: follow: records are coming again after 5.2 s\n"
              "stmctl: follow: 4074 records, 4925 lost, 0 rejected, 64 overflowing, silent for "
              "5.2 s, 8 time-outs, 1 failing exchange\n");
}

TEST_F(Follow, what_has_come_is_soon_to_be_seen)
{
    const std::string follow = really({"--rate", "2"}, {"follow", "-n", "40", "--format", "csv"});
    for (const char *where : {"-o log", ">log"}) {
        const Result result =
            in_script("rm -f log; " + follow + where + " < <(await '^2;' log; printf 's\\n')");
        EXPECT_EQ(result.status, 3) << where << result.errors;
    }
}

TEST_F(Follow, a_reader_that_goes_away_ends_it_quietly)
{
    const Result result =
        in_shell({"follow", "--format", "csv"}, "| head -n 3; echo ${PIPESTATUS[0]}");
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output.substr(result.output.size() - 2), "0\n");
}

TEST_F(Follow, a_file_that_cannot_be_written_ends_it_soon)
{
    const Result result = stmctl({"follow", "--duration", "1000", "-o", "/dev/full"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors.find("stmctl: follow: "), 0U) << result.errors;
    EXPECT_TRUE(
        result.errors.ends_with("\nstmctl: cannot write '/dev/full': No space left on device\n"))
        << result.errors;
    EXPECT_LT(transcript().back().microseconds, 2'000'000);
}

TEST_F(Follow, a_device_that_goes_and_comes_back_uses_up_no_descriptors)
{
    Words going = {"--rate", "10"};
    for (int second = 2; second <= 60; second += 3) {
        const std::string time = std::to_string(second);
        going.insert(going.end(), {"--fault", "gone@t=" + time + "s.." + time + ".5s"});
    }
    const Words follow = {"follow", "--keep-going", "--duration", "62", "-o", "/dev/null"};
    const Result result =
        run({"bash", "-c", "ulimit -n 20; " + quoted(on_board_with(going, follow))});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(count(result.errors, "the device is gone; waiting for it"), 20U) << result.errors;
}

} // namespace
