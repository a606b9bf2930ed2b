// Goal: --silence, --fail-on-loss and --summary: how a run is judged, and what it leaves.
#include "tests/stmctl/ring_bench.hpp"

#include <csignal>
#include <fstream>

namespace
{

// What causes a hole in a stream, and the summary of a run with it.
struct Hole {
    const char *name;
    Words options;
};

const std::vector<Hole> HOLES = {
    {"loss", {"--fault", "flip@30=1"}},
    {"rejection", {"--fault", "flip@30"}},
    {"overflow", {"--rate", "20000"}},
    {"silence", {"--fault", "silence@t=0.3s..2.6s"}},
};

class Judgement : public RingBench
{
  protected:
    // Commands that continue through all of it.
    static std::vector<Words> commands()
    {
        return {{"follow", "--variant", "temp", "--duration", "4", "--keep-going"},
                {"watch", "--variant", "temp", "--duration", "4", "--keep-going"},
                {"ring", "write", "--duration", "4"}};
    }

    static Words with(Words command, const Words &more)
    {
        command.insert(command.end(), more.begin(), more.end());
        return command;
    }

    Result judged(const Words &command, const Words &options, const Words &more)
    {
        return stmctl(with(command, more), options);
    }

    std::string summary_of(const Words &command, const Words &options = {})
    {
        judged(command, options, {"--summary", "summary.json"});
        return read_text("summary.json");
    }

    void expect_untouched() const
    {
        EXPECT_TRUE(transcript().empty()) << "the device is not touched";
    }
};

TEST_F(Judgement, words_that_are_not_a_time_of_silence_are_refused)
{
    const std::string rest = " must be a time such as 90, 90s, 5m, 1.5h or 500ms, above 0 and at "
                             "most 1000000000 s, not '";
    for (const Words &command : {Words{"follow"}, Words{"records"}, Words{"watch"},
                                 Words{"ring", "write"}, Words{"ring", "read"}}) {
        for (const std::string words :
             {"0", "-1", "0.0", "x", " 1", "1e3", "nan", "inf", "1000000000.1", "0s", "-1m", "5 m",
              "1d", "1hh", "1M", "s", "277777.8h", "1000000000001ms"}) {
            expect_failure(judged(command, {}, {"--silence", words}), 2,
                           "--silence" + rest + words + "'");
            expect_untouched();
        }
    }
    for (const std::string words : {"0.001", "0.0001", "1000000000", ".5", "3.", "0.1ms", "90s",
                                    "5m", "1.5h", "500ms", "277777.7h"}) {
        EXPECT_EQ(stmctl({"records", "--silence", words}).status, 0) << words;
    }
    for (const std::string command : {"adc", "raw"}) {
        EXPECT_EQ(stmctl({command, "--silence", "1"}).status, 2) << "frames come when asked for";
    }
}

TEST_F(Judgement, help_shows_what_counts_as_a_silence)
{
    const std::string stream = "(10 s; 2 s with --keep-going)\n";
    const std::vector<std::pair<Words, std::string>> commands = {
        {{"follow"}, stream},           {{"records"}, stream},          {{"watch"}, stream},
        {{"ring", "write"}, "(2 s)\n"}, {{"ring", "read"}, "(10 s)\n"},
    };
    for (const auto &[command, silence] : commands) {
        const std::string help = stmctl(with(command, {"--help"})).output;
        EXPECT_NE(help.find("  shortest silence " + silence), std::string::npos) << help;
    }
}

// The board is silent for 1.9 s, 3 s before the end.
TEST_F(Judgement, the_user_decides_what_a_silence_is)
{
    const Words silent = {"--fault", "silence@t=2s..3.9s"};
    const Words follow = {"follow", "--duration", "7", "--variant", "temp", "--fail-on-loss"};
    const Result shorter = judged(follow, silent, {"--silence", "1.5"});
    EXPECT_EQ(shorter.status, 1);
    EXPECT_NE(shorter.errors.find("nothing has come for 1.5 seconds; " +
                                  std::string("nothing is answering")),
              std::string::npos)
        << shorter.errors;
    const Result longer = judged(follow, silent, {"--silence", "3"});
    EXPECT_EQ(longer.errors.find("silent for"), std::string::npos) << longer.errors;
}

TEST_F(Judgement, every_command_accepts_the_length_of_a_silence)
{
    const Words silent = {"--fault", "silence@t=2s..3.9s"};
    for (const Words &command : {Words{"watch", "--keep-going"}, Words{"ring", "write"}}) {
        const Words limited = with(command, {"--duration", "7"});
        const std::string usual = judged(limited, silent, {}).errors;
        EXPECT_NE(usual.find(", silent for 2."), std::string::npos) << usual;
        const std::string longer = judged(limited, silent, {"--silence", "3"}).errors;
        EXPECT_EQ(longer.find("silent for"), std::string::npos) << longer;
        EXPECT_NE(longer.find(", 4 time-outs\n"), std::string::npos) << longer;
    }
    const Words records = {"records", "-n", "200", "--variant", "temp", "--keep-going"};
    const std::string waits =
        judged(records, {"--fault", "silence@t=0.006s..2.6s"}, {"--silence", "10"}).errors;
    EXPECT_NE(waits.find(", silent for 10.1 s, 20 time-outs\n"), std::string::npos) << waits;
}

TEST_F(Judgement, a_lasting_silence_ends_the_run_at_the_given_time)
{
    for (const std::string seconds : {"1", "4"}) {
        const Result result =
            with_fault("silence", {"follow", "--duration", "60", "--silence", seconds});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.errors.find("nothing has come for " + seconds +
                                     (seconds == "1" ? " second; " : " seconds; ")),
                  std::string::npos)
            << result.errors;
        const int64_t end = std::stoll(seconds) * 1'000'000;
        EXPECT_GE(transcript().back().microseconds, end);
        EXPECT_LT(transcript().back().microseconds, end + 1'000'000);
    }
}

TEST_F(Judgement, each_hole_is_a_failure_where_there_is_to_be_none)
{
    for (const Words &command : commands()) {
        for (const Hole &hole : HOLES) {
            EXPECT_EQ(judged(command, hole.options, {}).status, 0) << command[0] << hole.name;
            EXPECT_EQ(judged(command, hole.options, {"--fail-on-loss"}).status, 1)
                << command[0] << hole.name;
        }
        const Result whole = judged(command, {}, {"--fail-on-loss"});
        EXPECT_EQ(whole.status, 0) << whole.errors;
    }
}

TEST_F(Judgement, records_are_judged_by_their_holes_too)
{
    const Words records = {"records", "-n",           "200",           "--variant",
                           "temp",    "--keep-going", "--fail-on-loss"};
    EXPECT_EQ(judged(records, {}, {}).status, 0);
    for (const char *fault : {"flip@30", "stuck@30"}) {
        EXPECT_EQ(judged(records, {"--fault", fault}, {}).status, 1) << fault;
    }
}

// It asks after two seconds, then after four more: once each time, because asking twice discards
// the answer to the first request.
TEST_F(Judgement, a_silence_is_asked_into_once_per_wait)
{
    const Result result = stmctl({"records", "-n", "200", "--variant", "temp", "--keep-going"},
                                 {"--fault", "silence@t=0.006s..2.6s"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors,
              "stmctl: records: no data from the co-processor; asking again\n"
              "stmctl: records: records are coming again after 6.2 s\n"
              "stmctl: records: 200 of 200 records, 0 lost, 0 rejected, 0 overflowing, silent for "
              "6.2 s, 12 time-outs\n");
    EXPECT_EQ(std::ranges::count(transcript(), 4096U, &Line::length), 1 + 2 + 1)
        << "synchronised at the begin, for each question and at the end";
}

TEST_F(Judgement, failed_exchanges_and_time_outs_are_not_holes_if_nothing_is_lost)
{
    EXPECT_EQ(stmctl({"follow", "--variant", "temp", "--duration", "3", "--fail-on-loss"},
                     {"--rate", "1"})
                  .status,
              0);
    EXPECT_EQ(
        stmctl({"follow", "-n", "100", "--keep-going", "--fail-on-loss"}, {"--fault", "exchange@3"})
            .status,
        0);
}

TEST_F(Judgement, losses_that_cannot_be_seen_cannot_be_judged)
{
    for (const std::string command : {"follow", "records"}) {
        expect_failure(
            stmctl({command, "--format", "hex", "--fail-on-loss"}), 2,
            "--fail-on-loss cannot be combined with --format hex, which does not show losses");
        expect_untouched();
        EXPECT_EQ(stmctl({command, "--format", "hex", "-n", "3"}).status, 0);
    }
}

TEST_F(Judgement, a_summary_of_each_command_is_one_object)
{
    EXPECT_EQ(summary_of({"follow", "-n", "500", "--variant", "temp"}),
              "{\"records\":500,\"wanted\":500,\"lost\":0,\"rejected\":0,\"overflowing\":0,"
              "\"steps_back\":0,\"timeouts\":0,\"failing_exchanges\":0,\"silences\":0,"
              "\"silent_seconds\":0.000}\n");
    EXPECT_EQ(summary_of({"records"}, {"--fault", "flip@1"}),
              "{\"records\":0,\"wanted\":1,\"lost\":0,\"rejected\":1,\"overflowing\":0,"
              "\"steps_back\":0,\"timeouts\":0,\"failing_exchanges\":0,\"silences\":0,"
              "\"silent_seconds\":0.000}\n");
    EXPECT_EQ(summary_of({"watch", "--duration", "1"}, {"--fault", "stuck@30"}),
              "{\"records\":983,\"wanted\":null,\"lost\":1,\"rejected\":0,\"overflowing\":0,"
              "\"steps_back\":1,\"timeouts\":0,\"failing_exchanges\":0,\"silences\":0,"
              "\"silent_seconds\":0.000}\n");
    EXPECT_EQ(summary_of({"follow", "-n", "3", "--format", "hex"}),
              "{\"records\":3,\"wanted\":3,\"lost\":null,\"rejected\":0,\"overflowing\":null,"
              "\"steps_back\":0,\"timeouts\":0,\"failing_exchanges\":0,\"silences\":0,"
              "\"silent_seconds\":0.000}\n");
    EXPECT_EQ(summary_of({"ring", "write", "--duration", "1"}),
              "{\"records\":999,\"wanted\":null,\"lost\":0,\"rejected\":0,\"overflowing\":0,"
              "\"steps_back\":0,\"timeouts\":0,\"failing_exchanges\":0,\"silences\":0,"
              "\"silent_seconds\":0.000}\n");
    EXPECT_EQ(summary_of({"ring", "read", "--from-oldest", "-n", "50"}),
              "{\"records\":50,\"wanted\":50,\"lost\":0,\"rejected\":0,\"overflowing\":0,"
              "\"steps_back\":0,\"timeouts\":0,\"failing_exchanges\":0,\"silences\":0,"
              "\"silent_seconds\":0.000}\n");
}

TEST_F(Judgement, a_failed_run_writes_a_summary_too)
{
    EXPECT_EQ(summary_of({"follow", "-n", "500"}, {"--fault", "exchange@3"}),
              "{\"records\":0,\"wanted\":500,\"lost\":0,\"rejected\":0,\"overflowing\":0,"
              "\"steps_back\":0,\"timeouts\":0,\"failing_exchanges\":1,\"silences\":0,"
              "\"silent_seconds\":0.000}\n");
    const std::string silent = summary_of({"watch", "--duration", "3"}, {"--fault", "silence"});
    EXPECT_NE(silent.find("{\"records\":0,\"wanted\":null,"), std::string::npos) << silent;
    EXPECT_NE(silent.find("\"silences\":1,\"silent_seconds\":3."), std::string::npos) << silent;
    judged({"follow", "--duration", "5", "-o", "/dev/full"}, {}, {"--summary", "full.json"});
    EXPECT_EQ(read_text("full.json").find("{\"records\":"), 0U) << "although its output was lost";
}

TEST_F(Judgement, a_summary_that_the_disk_does_not_take_is_a_failure)
{
    const std::string full = "stmctl: cannot write '/dev/full': No space left on device\n";
    for (const Words &command : {Words{"ring", "write", "--duration", "0.1"},
                                 Words{"ring", "read", "--from-oldest", "-n", "5"}}) {
        const Result result = judged(command, {}, {"--summary", "/dev/full"});
        EXPECT_EQ(result.status, 1) << command[1];
        EXPECT_TRUE(result.errors.ends_with(full)) << result.errors;
        EXPECT_EQ(count(result.errors, full), 1U) << result.errors;
    }
}

TEST_F(Judgement, a_failed_start_leaves_an_old_summary_as_it_was)
{
    const std::vector<std::pair<Words, Words>> starts = {
        {{}, {"--fault", "no-device"}},
        {{}, {"--fault", "exchange@1"}},
        {{"--duration", "0"}, {}},
        {{"--silence", "x"}, {}},
    };
    for (const Words &command :
         {Words{"follow"}, Words{"records"}, Words{"watch"}, Words{"ring", "write"}}) {
        for (const auto &[more, options] : starts) {
            std::ofstream(path("summary.json")) << "old\n";
            EXPECT_NE(judged(with(command, more), options, {"--summary", "summary.json"}).status,
                      0);
            EXPECT_EQ(read_text("summary.json"), "old\n") << command[0];
            judged(with(command, more), options, {"--summary", "new.json"});
            EXPECT_FALSE(std::filesystem::exists(path("new.json"))) << command[0];
        }
    }
    std::ofstream(path("summary.json"))
        << "a longer old text than any summary has" << std::string(400, '.');
    EXPECT_EQ(count(summary_of({"records"}), "."), 1U) << "nothing is left of the old one";
}

TEST_F(Judgement, a_summary_that_cannot_be_written_fails_before_the_device_is_touched)
{
    for (const Words &command : {Words{"follow"}, Words{"records"}, Words{"watch"},
                                 Words{"ring", "write"}, Words{"ring", "read"}}) {
        expect_failure(judged(command, {}, {"--summary", "no/such.json"}), 1,
                       "cannot write 'no/such.json': No such file or directory");
        expect_untouched();
        expect_failure(judged(command, {}, {"--summary", "."}), 1,
                       "cannot write '.': Is a directory");
        expect_untouched();
    }
}

TEST_F(Judgement, a_stop_in_a_silence_fails_an_endless_run_and_stops_a_limited_one)
{
    struct Row {
        Words limit;
        int status;
    };
    for (const std::string command : {"follow", "watch"}) {
        for (const Row &row : {Row{{}, 1}, Row{{"--duration", "3600"}, 3}}) {
            std::filesystem::remove(path(".errors")); // those of the previous run
            Words words = {program(), command};
            words.insert(words.end(), row.limit.begin(), row.limit.end());
            const pid_t pid = start(on_board_in_real_time({"--fault", "silence"}, words));
            wait_for_words("waiting for it\n", ".errors"); // for longer than a second
            kill(pid, SIGINT);
            const Result result = finish(pid);
            EXPECT_EQ(result.status, row.status) << command;
            EXPECT_NE(result.errors.find(command + ": nothing came in the last "),
                      std::string::npos)
                << result.errors;
            EXPECT_NE(result.errors.find(", silent for "), std::string::npos);
        }
    }
}

} // namespace
